#pragma once

#include "records/printed_medication_list.h"

#include <QPrintPreviewDialog>
#include <string>

class QAction;

namespace mirelo::screens {

// The patient's medication list as it will stand on paper, with the system's printing and
// "Spara som PDF…" beside the preview's own tools. It shows the list it was given: printing and
// saving it write nothing to the patient's file.
class frmMedicationListPreview : public QPrintPreviewDialog {
    Q_OBJECT

  public:
    frmMedicationListPreview(PrintedMedicationList list, const std::string &pnr);

    QAction *cmdSavePdf;

    // Asks for a file name, suggesting one by the patient and the day in the user's documents,
    // and writes the list there as a PDF, whole or not at all.
    void cmdSavePdf_Click();

  private:
    PrintedMedicationList list_;
    std::string pnr_;
};

} // namespace mirelo::screens

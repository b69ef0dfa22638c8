#pragma once

#include "screens/allergy_reason_opener.h"

#include <QDialog>
#include <string>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace mirelo::screens {

// The note dialog: the physician's note on one product and its warning of hypersensitivity,
// written without leaving the medication view. It comes up when a product has been taken out,
// so the note typically says why. There is no way out but saving or deleting.
class frmMedicalNote : public QDialog, public AllergyReasonOpener {
    Q_OBJECT

  public:
    frmMedicalNote();

    QGroupBox *Frame1;
    QPlainTextEdit *txtExtendedMedicalInfo;
    QCheckBox *chkAllergic;
    QLabel *Label1;
    QPushButton *cmdDelete;
    QPushButton *cmdSave;

    // The product and patient of the last ReadPatientFile; they outlive a closing.
    std::string ID;
    std::string Pnr;

    // Fills the dialog for one product; the caller then shows it modally. A failure goes to
    // the caller and leaves the dialog unfilled.
    void ReadPatientFile(const std::string &id, const std::string &pnr);

    void chkAllergic_Click();
    void cmdSave_Click();
    void cmdDelete_Click();

    QCheckBox *allergicBox() override { return chkAllergic; }
    void emptyNoteBox() override;
    void SaveAllergicHistory() override;
    void deleteNote() override;

  protected:
    void reject() override {}

  private:
    int allergic() const;
};

} // namespace mirelo::screens

#pragma once

#include "records/printed_medication_list.h"

#include <QPageLayout>
#include <string>

class QPagedPaintDevice;

namespace mirelo::screens {

// The pages of the printed medication list: A4 portrait, a head on every page with the patient's
// name and number and "Sida N av M", the list's title and the patient on the first page, then
// its sections. A page breaks between entries only; a section's heading goes with its first
// entry, and an entry higher than a whole page begins on a page of its own and runs on.

QPageLayout MedicationListPageLayout();

// Paints every page onto the device: a printer, its preview or a PDF writer. A printer that can't
// be painted on gets nothing.
void PaintMedicationList(const PrintedMedicationList &list, QPagedPaintDevice &device);

// The list as the bytes of a PDF document.
std::string MedicationListPdf(const PrintedMedicationList &list);

} // namespace mirelo::screens

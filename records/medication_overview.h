#pragma once

#include "platform/xml_document.h"
#include "records/patient_file.h"
#include "records/product_grid.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace mirelo {

// The medication grid. A fresh view has 14 rows.
inline constexpr ProductGridShape medication_grid{ProductGridShape::WithTickBox, 14};

// The pictures of ImageList1, by their place in the list from 1. Images 4 and 5 are in the list
// but no rule shows them.
inline constexpr ProductPictures image_list1{
    .warning = 3, .note = 6, .allergyHistory = 7, .ticked = 1, .unticked = 2};

// Its columns, as SetupFlexGrid gives them.
const std::array<GridColumnLayout, medication_grid.Cols> &FlexGridLayout();

// Which of the two buttons to the extended information stands: the warning triangle in
// place of the plain button when anything in the patient's file carries a warning.
enum class ExtendedInfoButton { cmdNote, cmdExtInfo };

// Everything the medication view shows of one patient file, for the grid and labels to copy.
// Its rows are current products in file order, then past ones when shown. A fill that failed
// half-way makes no button choice: the buttons stand as they stood. The fill marks no row and
// fills no detail panel: that is its callers' choice.
struct MedicationOverview : ProductGridFill {
    std::optional<std::string> txtPnr;
    // Given name, one blank, family name.
    std::optional<std::string> txtFName;
    std::optional<ExtendedInfoButton> standingButton;
};

// The products of the patient's list as the view stands them: the current ones, then the past
// ones, each in file order, newest first. The list is never sorted.
struct StandingProducts {
    std::vector<platform::XmlNode> current;
    std::vector<platform::XmlNode> past;
};
StandingProducts ProductsByStanding(const platform::XmlDocument &patient);

// The fill of the medication view from a parsed patient document. With showAll (chkMode
// ticked) past products follow the current ones. gridRows is the grid's row count before
// the fill, which only grows.
MedicationOverview FillFlexGrid(const platform::XmlDocument &patient, bool showAll, int gridRows);

// Finds the patient's file, reads it once and fills. A missing file comes back as 0x80040207
// "Patientens fil saknas."; a damaged one as 0x80040204 with nothing cleared. When `reading`
// is given it receives the document the fill was made from, or nothing if there was none.
MedicationOverview ReadPatientFolder(const std::string &pnr, bool showAll, int gridRows,
                                     std::optional<PatientReading> *reading = nullptr);

} // namespace mirelo

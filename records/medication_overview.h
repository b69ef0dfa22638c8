#pragma once

#include "core/mirelo_error.h"
#include "platform/xml_document.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace mirelo {

// The medication grid: one product a row, under one fixed heading row, with the two icon
// columns fixed at the left.
namespace medication_grid {
inline constexpr int HistoryIcon = 0;
inline constexpr int WarningOrNoteIcon = 1;
inline constexpr int TickBox = 2;
inline constexpr int Product = 3;
inline constexpr int Prescribed = 4;
inline constexpr int Repeats = 5;
inline constexpr int Packages = 6;
inline constexpr int ID = 7;    // hidden: the key of the row
inline constexpr int ATC = 8;   // hidden: the key of the duplicate rule
inline constexpr int RegNr = 9; // hidden: the key to notes and allergy records
inline constexpr int Dosage = 10;

inline constexpr int Cols = 11;
inline constexpr int FixedRows = 1;
inline constexpr int FixedCols = 2;
// A fresh view has 14 rows; a fill only ever adds to them, so a patient with few products
// shows blank rows below the last one, and the rows a long list added stay until the view
// is dropped.
inline constexpr int RowsAtStart = 14;
} // namespace medication_grid

// The pictures of ImageList1, by their place in the list from 1; 0 is an empty cell.
// Images 4 and 5 are in the list but no rule shows them.
namespace image_list1 {
inline constexpr int None = 0;
inline constexpr int Ticked = 1;
inline constexpr int Unticked = 2;
inline constexpr int Warning = 3;
inline constexpr int Note = 6;
inline constexpr int AllergyHistory = 7;
} // namespace image_list1

// CellAlignment codes.
namespace cell_alignment {
inline constexpr int LeftCenter = 1;
inline constexpr int CenterCenter = 4;
inline constexpr int RightBottom = 8; // on the icon cells, as designed
} // namespace cell_alignment

struct RgbColor {
    int red = 0;
    int green = 0;
    int blue = 0;
    bool operator==(const RgbColor &) const = default;
};

// Two current products of one ATC code are shown in this colour, every cell of both rows.
inline constexpr RgbColor DuplicateAtcColor{255, 0, 0};

// What SetupFlexGrid gives each column: width in twips (0 hides it, its cells still read),
// the bold heading in row 0 with its alignment (none on the three icon columns), the
// alignment of the column as a whole where one is set, and the alignment of its cells.
struct GridColumnLayout {
    int width = 0;
    std::string heading;
    std::optional<int> headingAlignment;
    std::optional<int> colAlignment;
    int cellAlignment = cell_alignment::LeftCenter;
};
const std::array<GridColumnLayout, medication_grid::Cols> &FlexGridLayout();

// A cell as the fill leaves it. Unset members were not written and keep the cleared state.
struct GridCell {
    std::string text;
    int picture = image_list1::None;
    std::optional<int> alignment;
    std::optional<RgbColor> foreColor;
    bool operator==(const GridCell &) const = default;
};

struct MedicationRow {
    std::array<GridCell, medication_grid::Cols> cells;
};

// Which of the two buttons to the extended information stands: the warning triangle in
// place of the plain button when anything in the patient's file carries a warning.
enum class ExtendedInfoButton { cmdNote, cmdExtInfo };

// Everything the medication view shows of one patient file, for the grid and labels to copy.
// A fill that failed half-way holds what was written up to the failure, as the view shows
// it: the rows before it, the row it broke off in with the cells written so far, no button
// choice (the buttons stand as they stood). The failure itself is to be raised after the
// copy.
struct MedicationOverview {
    // The grid was cleared (texts, pictures and formats; rows and widths kept) and set up
    // afresh. When false nothing of the view is to change.
    bool cleared = false;
    std::optional<std::string> txtPnr;
    // Given name, one blank, family name.
    std::optional<std::string> txtFName;
    // Grid rows 1, 2, ...: current products in file order, then past ones when shown.
    std::vector<MedicationRow> rows;
    // The grid's row count afterwards, heading included; rows beyond `rows` are blank.
    int gridRows = 0;
    // The grid's current row after the last write (its column is the last, 10). The fill
    // marks no row and fills no detail panel: that is its callers' choice.
    int currentRow = 0;
    std::optional<ExtendedInfoButton> standingButton;
    std::optional<MireloError> failure;
};

// The fill of the medication view from a parsed patient document. With showAll (chkMode
// ticked) past products follow the current ones. gridRows is the grid's row count before
// the fill, which only grows.
MedicationOverview FillFlexGrid(const platform::XmlDocument &patient, bool showAll, int gridRows);

// A patient file as one action read it, for the next step of the same action to use instead of
// reading the file again: opening a patient fills the grid and then shows the first row.
struct PatientReading {
    std::string path;
    platform::XmlDocument patient;
};

// Finds the patient's file, reads it once and fills. A missing file comes back as 0x80040207
// "Patientens fil saknas."; a damaged one as 0x80040204 with nothing cleared. When `reading`
// is given it receives the document the fill was made from, or nothing if there was none.
MedicationOverview ReadPatientFolder(const std::string &pnr, bool showAll, int gridRows,
                                     std::optional<PatientReading> *reading = nullptr);

} // namespace mirelo

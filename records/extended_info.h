#pragma once

#include "core/mirelo_error.h"
#include "platform/xml_document.h"
#include "records/medication_overview.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

// The extended information: the products of one patient that carry a note or a warning, one
// row for each product number, with the note of the picked product and the general note on
// the patient beside them.
namespace mirelo::extended_info {

// Its grid: like the medication grid without the tick box, under one fixed heading row, with
// the two icon columns fixed at the left.
namespace grid {
inline constexpr int HistoryIcon = 0;
inline constexpr int WarningOrNoteIcon = 1;
inline constexpr int Product = 2;
inline constexpr int Prescribed = 3;
inline constexpr int Repeats = 4;
inline constexpr int Packages = 5;
inline constexpr int ID = 6;    // hidden: the key of the row
inline constexpr int ATC = 7;   // hidden: the key of the duplicate rule
inline constexpr int RegNr = 8; // hidden: the key to notes and allergy records
inline constexpr int Dosage = 9;

inline constexpr int Cols = 10;
inline constexpr int FixedRows = 1;
inline constexpr int FixedCols = 2;
// A fill only adds rows: a short list leaves blank rows below its last one.
inline constexpr int RowsAtStart = 11;
} // namespace grid

// The screen's three icons, by their place in its list from 1; 0 is an empty cell.
namespace images {
inline constexpr int None = 0;
inline constexpr int Warning = 1;
inline constexpr int Note = 2;
inline constexpr int AllergyHistory = 3;
} // namespace images

// Widths, bold headings and alignments as SetupFlexGrid writes them.
const std::array<GridColumnLayout, grid::Cols> &FlexGridLayout();

struct Row {
    std::array<GridCell, grid::Cols> cells;
};

// What a fill leaves on the screen. A fill that failed half-way holds what was written up to
// the failure; the failure is to be raised after the copy.
struct Fill {
    // The grid was cleared (texts, pictures and formats; rows and widths kept) and set up
    // afresh. When false nothing on the screen is to change.
    bool cleared = false;
    // Caption of Frame1 and the general note with CR LF line breaks; unset when the general
    // note was left alone, so that a half-typed one survives.
    std::optional<std::string> frame1Caption;
    std::optional<std::string> text1;
    // Who last changed the general note, and when; " - " before anybody has.
    std::optional<std::string> label3;
    std::vector<Row> rows;
    // The grid's row count afterwards, heading included; rows beyond `rows` are blank.
    int gridRows = 0;
    // The current row when the fill stopped: the last row written, or the last row the red
    // marking touched, or 0 with nothing listed. SelectFlexGridID searches no further down.
    int currentRow = 0;
    std::optional<MireloError> failure;
};

// The fill from a parsed patient document: the newest product of each product number that has
// a note or a warning, in file order, two rows of one ATC code in red. The general note is
// loaded only when loadGeneralNote says so, which is when the medication view is on show:
// refills from this screen happen while it is hidden. gridRows is the row count before.
Fill FillFlexGrid(const platform::XmlDocument &patient, bool loadGeneralNote, int gridRows);

// Finds the patient's file and fills. A missing file is 0x80040207 "Patientens fil saknas.";
// a damaged one 0x80040204 with nothing cleared.
Fill ReadPatientFolder(const std::string &pnr, bool loadGeneralNote, int gridRows);

// The picked product as its selection shows it.
struct ProductPanel {
    std::string id;            // kept in the tag of txtNoteChanged
    std::string frame2Caption; // "Notering för patient ang: " name ", ordinerat av: " prescriber
    std::string text2;         // the note, CR LF line breaks
    bool cmdAllergicHistoryVisible = false;
    bool allergic = false;
    std::string txtNoteChanged; // author " - " time of the note
};

// FlexGrid_SelChange: reads the file afresh (a damaged one is 0x80040204). Nothing when the
// mouse has not been on a row of the grid; an empty panel (no value) for a blank row; else the
// product whose ID stands in the row. productText and id are columns 2 and 6 of the row.
struct Selection {
    bool showsNothing = false;
    std::optional<ProductPanel> product;
};
Selection SelectionOf(const std::string &pnr, int mouseRow, const std::string &productText,
                      const std::string &id);

} // namespace mirelo::extended_info

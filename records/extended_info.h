#pragma once

#include "platform/xml_document.h"
#include "records/product_grid.h"

#include <optional>
#include <span>
#include <string>

// The extended information: the products of one patient that carry a note or a warning, one
// row for each product number, with the note of the picked product and the general note on
// the patient beside them.
namespace mirelo::extended_info {

// Its grid: the medication grid's columns without the tick box, 11 rows at the start.
inline constexpr ProductGridShape grid{ProductGridShape::WithoutTickBox, 11};

// The screen's three icons, by their place in its list from 1.
inline constexpr ProductPictures images{.warning = 1, .note = 2, .allergyHistory = 3};

// Widths, bold headings and alignments as SetupFlexGrid writes them.
std::span<const GridColumnLayout> FlexGridLayout();

// What a fill leaves on the screen. The current row is where SelectFlexGridID searches no
// further down.
struct Fill : ProductGridFill {
    // Caption of Frame1 and the general note with CR LF line breaks; unset when the general
    // note was left alone, so that a half-typed one survives.
    std::optional<std::string> frame1Caption;
    std::optional<std::string> text1;
    // Who last changed the general note, and when; " - " before anybody has.
    std::optional<std::string> label3;
};

// The fill from a parsed patient document: the newest product of each product number that has
// a note or a warning, in file order, two rows of one ATC code in red. The general note is
// loaded only when loadGeneralNote says so, which is when the medication view is on show:
// refills from this screen happen while it is hidden. gridRows is the row count before.
Fill FillFlexGrid(const platform::XmlDocument &patient, bool loadGeneralNote, int gridRows);

// Finds the patient's file and fills. A missing file is 0x80040207 "Patientens fil saknas.";
// a damaged one 0x80040204 with nothing cleared.
Fill ReadPatientFolder(const std::string &pnr, bool loadGeneralNote, int gridRows);

// SelectFlexGridID's search: the product's row by its ID, else by its product number, no further
// down than the current row: after a fill that is the last row written or the last row the red
// marking touched, so a product below it isn't found. An empty product number matches a blank
// row.
RowSearch RowOfProduct(const ShownGrid &shown, const std::string &id, const std::string &regNr);

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

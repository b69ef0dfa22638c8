#pragma once

#include "core/mirelo_error.h"
#include "platform/message_box.h"
#include "records/medication_overview.h"

#include <optional>
#include <string>

namespace mirelo {

// Where the grid stands when its selection changes: the cell the mouse was last in, the
// current row, and the texts of column 3 (the display name) and column 7 (the ID) of the
// current row.
struct GridSelection {
    int mouseRow = 0;
    int mouseCol = 0;
    int row = 0;
    std::string productText;
    std::string id;
};

// The detail panel under the grid, as the selection of a row leaves it.
struct DetailPanel {
    std::string frame1Caption; // display name, ", ordinerat av: ", PrescribedBy
    std::string label12;       // InsertedBy
    std::string label16;       // InsertedTimestamp
    std::string label13;       // TakenOutBy
    std::string label17;       // TakenOutTimestamp
    bool cmdAllergicHistoryVisible = false;
    // Label11 and Image1, the warning line. Unset: left as they stand, so a warning stays on
    // screen when the user moves on to a blank row.
    std::optional<bool> warningLineVisible;
    // Set on a product with a warning; otherwise the buttons stand as the fill left them.
    std::optional<ExtendedInfoButton> standingButton;
    // Whether the current row is to be marked whole; a blank row leaves the marking as it is.
    bool markRow = false;
};

// FlexGrid_SelChange: reads the patient's file afresh (a damaged file is 0x80040204, a
// missing one 53) and gives the panel of the product on the current row, the empty panel of
// a blank row, or nothing when the selection is on the heading.
// Within one action that has just read the file, `alreadyRead` stands in for reading it again
// when it was read from the very path the number leads to.
std::optional<DetailPanel> DetailPanelOnSelChange(const std::string &pnr,
                                                  const GridSelection &selection,
                                                  const PatientReading *alreadyRead = nullptr);

// What a mouse button going down in the grid asks for. `picture` is the ImageList1 number
// the cell shows: in column 2 the clicked cell, in columns 0 and 1 the cell of the current
// row (which the click in a fixed column has made the clicked row).
enum class GridClick { Nothing, TakeOut, PutBack, OpenExtendedInfo, OpenAllergyHistory };
GridClick MeaningOfMouseDown(int button, int mouseRow, int mouseCol, int picture);

// After a tick the grid has been filled again. The product is sought by its ID and selected
// where it now stands, unless it was taken out while past products are hidden: then it has
// left the grid and the first row is selected instead.
enum class ReselectionAfterTick { ById, FirstRow };
ReselectionAfterTick ReselectAfterTick(GridClick tick, bool showAll);

// SelectFlexGridID's search after a tick: the first row from the top that holds the ID. Only IDs
// known to be in the grid are asked for: the view's search has no end of its own.
RowSearch RowOfId(const ShownGrid &shown, const std::string &id);

// The boxes of the medication view's failures.
// FlexGrid_MouseDown and all it calls: the description alone, also for a missing file; a patient
// held by another workstation as HeldPatientBox words it.
platform::MsgBoxRequest MouseDownFailureBox(const MireloError &error);

// A patient file that can't be read into the view, when a patient is opened from the search list
// or printed: a damaged or missing file is shown by its description with a stop icon, anything
// else by number and description.
platform::MsgBoxRequest OpeningFailureBox(const MireloError &error);

// chkMode_Click: a damaged or missing file is shown by its description and leads back to the
// search; anything else shows number and description and the view stays.
struct ChkModeFailure {
    platform::MsgBoxRequest box;
    bool backToSearch = false;
};
ChkModeFailure ChkModeFailureReport(const MireloError &error);

} // namespace mirelo

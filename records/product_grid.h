#pragma once

#include "core/mirelo_error.h"
#include "platform/message_box.h"
#include "platform/xml_document.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace mirelo {

// The grids of products, the medication view's and the extended information's: one product a
// row under one fixed heading row, with the icon columns fixed at the left. They differ in their
// columns, their pictures and which products stand in them; a product's row is written one way.

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

// Two products of one ATC code are shown in this colour, every cell of both rows.
inline constexpr RgbColor DuplicateAtcColor{255, 0, 0};

// The shape of a product grid: where its columns stand, from 0, its fixed heading row and icon
// columns, and the rows it starts with. Both grids hold the same columns in one order; only the
// medication view's has a tick box, after the two icons, so each later column of it stands one
// place further right.
class ProductGridShape {
    int shift_;

  public:
    enum TickBoxColumn { WithoutTickBox, WithTickBox };
    constexpr ProductGridShape(TickBoxColumn tickBox, int rowsAtStart)
        : shift_(tickBox == WithTickBox ? 1 : 0), RowsAtStart(rowsAtStart) {}

    int HistoryIcon = 0;
    int WarningOrNoteIcon = 1;
    std::optional<int> TickBox = shift_ == 1 ? std::optional<int>(2) : std::nullopt;
    int Product = 2 + shift_;
    int Prescribed = 3 + shift_;
    int Repeats = 4 + shift_;
    int Packages = 5 + shift_;
    int ID = 6 + shift_;    // hidden: the key of the row
    int ATC = 7 + shift_;   // hidden: the key of the duplicate rule
    int RegNr = 8 + shift_; // hidden: the key to notes and allergy records
    int Dosage = 9 + shift_;
    int Cols = 10 + shift_;
    int FixedRows = 1;
    int FixedCols = 2;
    // A fill only ever adds rows to these, so a patient with few products shows blank rows below
    // the last one, and the rows a long list added stay until the screen is dropped.
    int RowsAtStart;
};

// What SetupFlexGrid gives each column: width in twips (0 hides it, its cells still read), the
// bold heading in row 0 with its alignment (none on the icon columns), the alignment of the
// column as a whole where one is set, and the alignment of its cells.
struct GridColumnLayout {
    int width = 0;
    std::string heading;
    std::optional<int> headingAlignment;
    std::optional<int> colAlignment;
    int cellAlignment = cell_alignment::LeftCenter;
};

// A cell as the fill leaves it. Unset members were not written and keep the cleared state.
struct GridCell {
    std::string text;
    int picture = 0; // the number of the picture in the grid's image list; 0 is an empty cell
    std::optional<int> alignment;
    std::optional<RgbColor> foreColor;
    bool operator==(const GridCell &) const = default;
};

// One product's cells, a cell for each column of its grid.
struct ProductRow {
    std::vector<GridCell> cells;
};

// The numbers in a grid's image list of the pictures its rows show. A grid without a tick box
// has no tick pictures.
struct ProductPictures {
    int warning = 0;
    int note = 0;
    int allergyHistory = 0;
    int ticked = 0;
    int unticked = 0;
};

// What a fill leaves of a product grid, for the screen to copy. A fill that failed half-way holds
// what was written up to the failure, as the grid showed it: the rows before it, the row it broke
// off in with the cells written so far. The failure itself is to be raised after the copy.
struct ProductGridFill {
    // The grid was cleared (texts, pictures and formats; rows and widths kept) and set up
    // afresh. When false nothing on the screen is to change.
    bool cleared = false;
    // Grid rows 1, 2, ...
    std::vector<ProductRow> rows;
    // The grid's row count afterwards, heading included; rows beyond `rows` are blank.
    int gridRows = 0;
    // The grid's current row after the last write (its column is the last): the last row
    // written, or the last row the red marking touched, or 0 with nothing listed.
    int currentRow = 0;
    std::optional<MireloError> failure;
};

// Writes the products' rows of one grid into its fill.
class ProductRowWriter {
  public:
    ProductRowWriter(const ProductGridShape &shape, std::span<const GridColumnLayout> layout,
                     ProductPictures pictures, ProductGridFill &fill);

    // Adds the product's row below the others. Its cells are written one by one in the order of
    // the columns, so a product that lacks an element leaves the cells before it written, as the
    // grid showed them; a cell is formatted before its text is read. Gives whether the product
    // carries a warning.
    bool writeRow(const platform::XmlNode &product);

    // Two products of one ATC code among the first `count` rows stand out in red, whole rows;
    // two empty codes are equal too. The grid was painted pair by pair, which left its current
    // row on the later row of the last pair that matched: the last row of the code of the
    // latest row that has a later twin.
    void markDuplicateAtc(int count);

  private:
    GridCell &cell(int col);

    ProductGridShape shape_;
    std::span<const GridColumnLayout> layout_;
    ProductPictures pictures_;
    ProductGridFill &fill_;
};

// SetupFlexGrid's own handler, and the allergy history's around its whole fill; the screen goes
// on with what the grid has.
platform::MsgBoxRequest SetupFlexGridFailureBox(const MireloError &error);

// How SelectFlexGridRow leaves a grid's marking: a grid of its heading alone as it stands, the
// heading row without a marking, any other row marked whole from the first column after the
// fixed ones to the last.
enum class RowMarking { Unchanged, None, WholeRow };
RowMarking MarkingOfRow(int gridRows, int row);

// A product grid on the screen as a search for a product's row reads it.
struct ShownGrid {
    int rows = 0; // heading included
    int currentRow = 0;
    std::function<std::string(int row, int col)> text;
};

// The first of rows 1 to lastRow whose text in column `col` is `wanted`.
std::optional<int> FirstRowWith(const ShownGrid &grid, int col, const std::string &wanted,
                                int lastRow);

// Where SelectFlexGridID's search for a product's row ends: nowhere in a grid of its heading
// alone, which stays as it is; on the heading for an empty ID, which takes the marking away; on
// the product's row; or on no row when the product isn't found.
struct RowSearch {
    enum class End { GridWithoutRows, EmptyId, Found, NotFound };
    End end = End::NotFound;
    int row = 0; // the product's row when found
    bool operator==(const RowSearch &) const = default;
};
RowSearch SearchById(const ShownGrid &grid, const std::string &id,
                     const std::function<std::optional<int>()> &find);

// A fill of a grid that had gridRows rows, made by `write`. A failure half-way is kept in the
// fill with what was written before it.
template <typename Fill, typename Write> Fill FillKeepingFailure(int gridRows, Write write) {
    Fill fill;
    fill.gridRows = gridRows;
    try {
        write(fill);
    } catch (const MireloError &error) {
        fill.failure = error;
    }
    return fill;
}

} // namespace mirelo

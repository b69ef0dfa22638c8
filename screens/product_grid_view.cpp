#include "screens/product_grid_view.h"

#include "platform/gui/flex_grid.h"
#include "platform/message_box.h"

namespace mirelo::screens {
namespace {

// SetupFlexGrid: widths, column alignments and the bold headings. A failure is shown in a box
// of its own and the fill goes on with what the grid has.
void setUpColumns(platform::FlexGrid *grid, std::span<const GridColumnLayout> columns) {
    try {
        for (int col = 0; col < static_cast<int>(columns.size()); ++col) {
            const GridColumnLayout &column = columns[col];
            grid->setColWidth(col, column.width);
            if (column.colAlignment) {
                grid->setColAlignment(col, *column.colAlignment);
            }
            if (column.headingAlignment) {
                grid->setRow(0);
                grid->setCol(col);
                grid->setCellFontBold(true);
                grid->setCellAlignment(*column.headingAlignment);
                grid->setText(QString::fromStdString(column.heading));
            }
        }
    } catch (const MireloError &error) {
        platform::MsgBox(SetupFlexGridFailureBox(error));
    }
}

} // namespace

void showProductRows(platform::FlexGrid *grid, std::span<const GridColumnLayout> columns,
                     const ProductGridFill &fill) {
    if (!fill.cleared) {
        return;
    }
    grid->Clear();
    setUpColumns(grid, columns);
    if (grid->Rows() < fill.gridRows) {
        grid->setRows(fill.gridRows);
    }
    grid->writeCellsTogether([&] {
        for (size_t index = 0; index < fill.rows.size(); ++index) {
            const int row = static_cast<int>(index) + 1;
            const std::vector<GridCell> &cells = fill.rows[index].cells;
            for (int col = 0; col < static_cast<int>(cells.size()); ++col) {
                const GridCell &cell = cells[col];
                grid->setTextMatrix(row, col, QString::fromStdString(cell.text));
                grid->setCellPictureAt(row, col, cell.picture);
                if (cell.alignment) {
                    grid->setCellAlignmentAt(row, col, *cell.alignment);
                }
                if (cell.foreColor) {
                    grid->setCellForeColorAt(
                        row, col,
                        QColor(cell.foreColor->red, cell.foreColor->green, cell.foreColor->blue));
                }
            }
        }
    });
    grid->setRow(fill.currentRow);
    grid->setCol(static_cast<int>(columns.size()) - 1);
}

void SelectFlexGridRow(platform::FlexGrid *grid, int row) {
    switch (MarkingOfRow(grid->Rows(), row)) {
    case RowMarking::Unchanged:
        return;
    case RowMarking::None:
        grid->setHighLight(0);
        return;
    case RowMarking::WholeRow:
        grid->setHighLight(1);
        grid->setRow(row);
        grid->setCol(grid->FixedCols());
        grid->setColSel(grid->Cols() - 1);
        return;
    }
}

ShownGrid shownGrid(const platform::FlexGrid *grid) {
    return {grid->Rows(), grid->Row(),
            [grid](int row, int col) { return grid->TextMatrix(row, col).toStdString(); }};
}

bool selectFoundRow(platform::FlexGrid *grid, const RowSearch &search,
                    const std::function<void()> &showRow) {
    switch (search.end) {
    case RowSearch::End::GridWithoutRows:
        return true;
    case RowSearch::End::EmptyId:
        grid->setHighLight(0);
        return true;
    case RowSearch::End::Found:
        grid->setRow(search.row);
        showRow();
        SelectFlexGridRow(grid, search.row);
        return true;
    case RowSearch::End::NotFound:
        return false;
    }
    return false;
}

} // namespace mirelo::screens

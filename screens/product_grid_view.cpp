#include "screens/product_grid_view.h"

#include "platform/gui/flex_grid.h"
#include "platform/message_box.h"
#include "records/medication_view_interaction.h"

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
        platform::MsgBox(SetupFlexGridFailureBox(error).text, platform::MsgBoxButtons::OK,
                         platform::MsgBoxIcon::Stop, "Mirelo");
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

} // namespace mirelo::screens

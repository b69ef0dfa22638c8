#pragma once

#include "records/product_grid.h"

#include <functional>
#include <span>

namespace mirelo::platform {
class FlexGrid;
}

namespace mirelo::screens {

// Copies a fill into a grid of products: cleared, its columns set up afresh, the rows written,
// and its current cell where the fill's last write left it. A fill that did not clear the grid
// leaves it as it stands. Raising the fill's failure is the caller's, once the rest of its
// screen has been copied too.
void showProductRows(platform::FlexGrid *grid, std::span<const GridColumnLayout> columns,
                     const ProductGridFill &fill);

// SelectFlexGridRow: marks the row whole for the user, as MarkingOfRow says.
void SelectFlexGridRow(platform::FlexGrid *grid, int row);

// The grid as a search for a product's row reads it.
ShownGrid shownGrid(const platform::FlexGrid *grid);

// SelectFlexGridID: the product's row, when the search found it, is made current, shown by the
// screen (`showRow`, its FlexGrid_SelChange) and marked whole; an empty ID takes the marking
// away. Gives false when the search found no row, for the screen to end it its own way.
bool selectFoundRow(platform::FlexGrid *grid, const RowSearch &search,
                    const std::function<void()> &showRow);

} // namespace mirelo::screens

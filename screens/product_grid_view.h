#pragma once

#include "records/product_grid.h"

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

} // namespace mirelo::screens

#pragma once

namespace mirelo::platform {

// Makes every MsgBox of the program a modal QMessageBox.
void installWidgetMessageBox();

} // namespace mirelo::platform

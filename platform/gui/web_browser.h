#pragma once

namespace mirelo::platform {

// Makes every hand-off open a Qt WebEngine view in a fresh off-the-record profile, so the
// browser keeps nothing on disk.
void installWebBrowser();

} // namespace mirelo::platform

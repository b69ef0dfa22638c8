#pragma once

namespace mirelo::screens {

// Makes the screens' pictures and icons available and gives every window the program's mark;
// cheap after the first call.
void ensureScreenResources();

} // namespace mirelo::screens

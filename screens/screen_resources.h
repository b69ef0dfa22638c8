#pragma once

namespace mirelo::screens {

// Makes the screens' pictures and icons available; cheap after the first call.
void ensureScreenResources();

} // namespace mirelo::screens

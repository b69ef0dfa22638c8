#include "screens/screen_resources.h"

#include <QtGlobal>

// The pictures are compiled into this library; a static library's resources are registered
// by hand before the first screen needs them.
static void registerScreenResources() {
    Q_INIT_RESOURCE(screens);
}

namespace mirelo::screens {

void ensureScreenResources() {
    static const bool registered = (registerScreenResources(), true);
    (void)registered;
}

} // namespace mirelo::screens

#include "screens/screen_resources.h"

#include <QApplication>
#include <QIcon>

// The pictures are compiled into this library; a static library's resources are registered
// by hand before the first screen needs them. Every window, the login screen and the frame
// first, carries the program's mark, the one its menu entry shows.
static void registerScreenResources() {
    Q_INIT_RESOURCE(screens);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/pictures/mirelo.svg")));
}

namespace mirelo::screens {

void ensureScreenResources() {
    static const bool registered = (registerScreenResources(), true);
    (void)registered;
}

} // namespace mirelo::screens

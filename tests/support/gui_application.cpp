#include "gui_application.h"

#include "platform/gui/mirelo_application.h"

#include <QApplication>

namespace mirelo::testing {

void ensureGuiApplication() {
    if (QApplication::instance() == nullptr) {
        // Widgets are real but drawn off screen; the browser processes the tests start inherit
        // this, and their sandbox refuses to run as root, which the test machines are.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
        static int argc = 1;
        static char name[] = "mirelo-tests";
        static char *argv[] = {name, nullptr};
        // The program's own application: a failure no handler catches ends the process with the
        // platform's report, as it does for the user.
        new platform::MireloApplication(argc, argv);
    }
}

} // namespace mirelo::testing

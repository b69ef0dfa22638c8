#include "gui_application.h"

#include <QApplication>

namespace mirelo::testing {

void ensureGuiApplication() {
    if (QApplication::instance() == nullptr) {
        static int argc = 1;
        static char name[] = "mirelo-tests";
        static char *argv[] = {name, nullptr};
        new QApplication(argc, argv);
    }
}

} // namespace mirelo::testing

#pragma once

#include "screens/screen_resources.h"

#include <QPointer>
#include <QWidget>

namespace mirelo::screens {

// Every screen exists once, under its own name: the first reference creates it, later ones get
// the same instance, and unloading destroys it so that the next reference gets a fresh one.
template <typename ScreenClass> class ScreenInstance {
  public:
    static ScreenClass &get() {
        if (instance().isNull()) {
            ensureScreenResources();
            instance() = new ScreenClass();
        }
        return *instance();
    }

    static bool isLoaded() { return !instance().isNull(); }

    // Safe from inside the screen's own handlers: the widget goes at the next turn of the
    // event loop, but the name is free at once.
    static void unload() {
        if (ScreenClass *screen = instance().data()) {
            instance().clear();
            screen->hide();
            screen->deleteLater();
        }
    }

  private:
    static QPointer<ScreenClass> &instance() {
        static QPointer<ScreenClass> screen;
        return screen;
    }
};

template <typename ScreenClass> ScreenClass &Screen() {
    return ScreenInstance<ScreenClass>::get();
}
template <typename ScreenClass> bool IsLoaded() {
    return ScreenInstance<ScreenClass>::isLoaded();
}
template <typename ScreenClass> void Unload() {
    ScreenInstance<ScreenClass>::unload();
}

} // namespace mirelo::screens

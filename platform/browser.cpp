#include "platform/browser.h"

#include <QCoreApplication>
#include <QEvent>
#include <stdexcept>

namespace mirelo::platform {
namespace {

std::function<std::unique_ptr<Browser>()> &factory() {
    static std::function<std::unique_ptr<Browser>()> current;
    return current;
}

int &waitsInProgress() {
    static int count = 0;
    return count;
}

// What the user does while a hand-off is on its way is dropped, not kept for later: a second
// press of "Ordinera" would otherwise post the patient to a second browser once the first
// hand-off is done.
class InputDiscard : public QObject {
  public:
    bool eventFilter(QObject *, QEvent *event) override {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
            return true;
        default:
            return false;
        }
    }
};

InputDiscard *&inputDiscard() {
    static InputDiscard *discard = nullptr;
    return discard;
}

} // namespace

BrowserWait::BrowserWait() {
    if (waitsInProgress()++ == 0 && QCoreApplication::instance() != nullptr) {
        inputDiscard() = new InputDiscard;
        QCoreApplication::instance()->installEventFilter(inputDiscard());
    }
}
BrowserWait::~BrowserWait() {
    if (--waitsInProgress() == 0) {
        delete inputDiscard();
        inputDiscard() = nullptr;
    }
}
bool BrowserIsWaiting() {
    return waitsInProgress() > 0;
}

std::unique_ptr<Browser> CreateBrowser() {
    if (!factory()) {
        throw std::logic_error("no browser installed");
    }
    return factory()();
}

void setBrowserFactory(std::function<std::unique_ptr<Browser>()> next) {
    factory() = std::move(next);
}

} // namespace mirelo::platform

#include "screens/dialog_window.h"

#include "screens/mainApp.h"
#include "screens/screen_instance.h"

#include <QEvent>
#include <QKeyEvent>
#include <QTimer>

namespace mirelo::screens {
namespace {

// Some window managers offer to minimise every window and take the frame along with a dialog;
// others minimise the dialog alone. Only the second is undone, once the window manager has
// said what became of the frame.
class MinimisingRefused : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override {
        auto *dialog = static_cast<QWidget *>(watched);
        if (event->type() == QEvent::WindowStateChange && dialog->isMinimized()) {
            QTimer::singleShot(0, dialog, [dialog] {
                const QWidget *frame = dialog->parentWidget();
                if (dialog->isMinimized() && (frame == nullptr || !frame->isMinimized())) {
                    dialog->setWindowState(dialog->windowState() & ~Qt::WindowMinimized);
                    dialog->show();
                    dialog->raise();
                    dialog->activateWindow();
                }
            });
        }
        return false;
    }
};

class EnterPresses : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override {
        const auto *key =
            event->type() == QEvent::KeyPress ? static_cast<QKeyEvent *>(event) : nullptr;
        if (key == nullptr || (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)) {
            return false;
        }
        static_cast<QAbstractButton *>(watched)->click();
        return true;
    }
};

} // namespace

void setUpDialogWindow(QDialog *dialog, CloseBox closeBox, Qt::WindowType type) {
    Qt::WindowFlags flags = type | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    if (closeBox == CloseBox::Shown) {
        flags |= Qt::WindowCloseButtonHint;
    }
    dialog->setParent(IsLoaded<mainApp>() ? &Screen<mainApp>() : nullptr, flags);
    dialog->installEventFilter(new MinimisingRefused(dialog));
}

void pressOnEnterWhenFocused(QAbstractButton *button) {
    button->installEventFilter(new EnterPresses(button));
}

} // namespace mirelo::screens

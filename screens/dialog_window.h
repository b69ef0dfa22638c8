#pragma once

#include <QAbstractButton>
#include <QDialog>

namespace mirelo::screens {

// A dialog's window: owned by the frame once there is one, so that it stands over the frame and
// goes with it; a title bar with a close box where the dialog has one, and never a button to
// minimise or maximise. A window manager that minimises a dialog anyway, its frame still on
// screen, gets it back at once: a modal dialog out of sight leaves the frame deaf to every click
// with nothing to say why.
enum class CloseBox { None, Shown };
void setUpDialogWindow(QDialog *dialog, CloseBox closeBox, Qt::WindowType type = Qt::Dialog);

// Enter presses the button while it has the focus, as Space does, in a dialog without a default
// button, where Enter elsewhere presses nothing.
void pressOnEnterWhenFocused(QAbstractButton *button);

} // namespace mirelo::screens

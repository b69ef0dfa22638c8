#pragma once

#include "platform/gui/image_list.h"
#include "records/product_grid.h"
#include "screens/writable_text.h"

#include <QAbstractButton>
#include <QDialog>
#include <QFont>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>
#include <QWidget>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace mirelo::platform {
class FlexGrid;
}

namespace mirelo::screens {

// Positions and sizes are designed in twips, 15 to the pixel at 96 dots per inch.
constexpr int TwipsPerPixel = 15;
constexpr int px(int twips) {
    return (twips + TwipsPerPixel / 2) / TwipsPerPixel;
}

// Places a control by its designed twips.
void placeTwips(QWidget *control, int left, int top, int width, int height);
// Captions measured in the narrower font of their time keep their place and show whole.
void showCaptionsWhole(std::initializer_list<QLabel *> captions);
// A value grows to its text from its designed width as far as its maximum width; a text cut
// there is shown whole as its tooltip.
void showValue(QLabel *value, const QString &text);
// A value stands at least a blank's width right of its caption's text: where a caption shown
// whole reaches further than it was designed to, the value moves right, its right edge kept.
void keepValueApart(const QLabel *caption, QWidget *value);
// Who is logged in, on a screen's bottom line: the value grows to the screen's right margin, and
// where that is not enough, caption and value move left together, as far as the middle.
void showLoggedIn(QLabel *caption, QLabel *value, const std::string &signature);
// A caption made from the patient's data shows its text as it stands: an "&" in it, as in the
// maker "Johnson & Johnson", is no mark of a shortcut key.
QString dataCaption(const std::string &text);

// A client area of the designed size in twips.
void sizeTwips(QWidget *screen, int width, int height);

// Verdana where the machine has it, a plain sans serif where it doesn't.
QFont verdana(double pointSize, bool bold = false);

// The plain dialog font, MS Sans Serif, where a dialog names no font of its own: its captions and
// columns were measured in it. Where it is missing, a condensed sans serif of about its width.
QFont dialogFont();

// Creates a control as a named member: its objectName is its name, so tests and accessibility
// tools find it.
template <typename Control, typename... Args>
Control *makeControl(QWidget *parent, const char *name, Args &&...args) {
    auto *control = new Control(std::forward<Args>(args)..., parent);
    control->setObjectName(QString::fromLatin1(name));
    // A caption stands at the top of its label, where the design put it: a label drawn taller
    // than its text, or reaching under the control below, keeps its text clear of that control.
    if constexpr (std::is_base_of_v<QLabel, Control>) {
        control->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    }
    // No box takes in a character that no file can hold.
    if constexpr (std::is_base_of_v<QLineEdit, Control>) {
        keepWritableText(control);
    }
    return control;
}

// A label with its caption at its designed place.
QLabel *makeLabel(QWidget *parent, const char *name, const QString &caption, int left, int top,
                  int width, int height);

// A push button at its designed place. It never becomes a dialog's default by taking the focus:
// Enter presses the default button a screen names, or one a screen lets Enter press.
QPushButton *makeButton(QWidget *parent, const char *name, const QString &caption, int left,
                        int top, int width, int height);

// A value label that grows to its text from its designed width (showValue); where a caption
// follows on the same line, no further than a gap before it.
QLabel *makeValueLabel(QWidget *parent, const char *name, int left, int top, int width, int height,
                       std::optional<int> nextCaptionLeft = std::nullopt);

// A grid of products at its designed place: the grid's shape, its picture list.
platform::FlexGrid *makeProductGrid(QWidget *parent, const char *name,
                                    const ProductGridShape &shape, platform::ImageList pictures,
                                    int left, int top, int width, int height);

// Names, titles and sizes a modal dialog with its close box in the plain dialog font.
void setUpModalDialog(QDialog *dialog, const char *name, const QString &title, int width,
                      int height);

// Puts a dialog in the middle of the window it belongs to.
void centreOnOwner(QWidget *dialog, const QWidget *owner);

// Enter anywhere on the screen presses the button, as the default button of a dialog is
// pressed; the child screens of the frame are no dialogs, so Qt's own default does nothing.
void pressOnEnter(QWidget *screen, QAbstractButton *button);
// Esc anywhere on the screen presses the button, as the cancel button of a dialog is pressed.
void pressOnEscape(QWidget *screen, QAbstractButton *button);

// The tab order of a screen, from its controls' tab indices: the chain follows the indices and
// the first control takes the focus.
void applyTabOrder(std::initializer_list<std::pair<int, QWidget *>> indexed);

} // namespace mirelo::screens

#include "screens/screen_layout.h"

#include "platform/gui/flex_grid.h"
#include "screens/dialog_window.h"

#include <QAction>
#include <algorithm>
#include <vector>

namespace mirelo::screens {

void placeTwips(QWidget *control, int left, int top, int width, int height) {
    control->setGeometry(px(left), px(top), px(width), px(height));
}

void sizeTwips(QWidget *screen, int width, int height) {
    screen->setFixedSize(px(width), px(height));
}

QFont verdana(double pointSize, bool bold) {
    QFont font;
    font.setFamilies({QStringLiteral("Verdana"), QStringLiteral("DejaVu Sans")});
    font.setPointSizeF(pointSize);
    font.setBold(bold);
    return font;
}

void showCaptionsWhole(std::initializer_list<QLabel *> captions) {
    for (QLabel *caption : captions) {
        caption->adjustSize();
    }
}

void showValue(QLabel *value, const QString &text) {
    value->setText(text);
    value->adjustSize();
    value->setToolTip(value->sizeHint().width() > value->width() ? text : QString());
}

void keepValueApart(const QLabel *caption, QWidget *value) {
    const QFontMetrics metrics = caption->fontMetrics();
    const int textEnd = caption->x() + caption->contentsRect().left() +
                        metrics.horizontalAdvance(caption->text()) + metrics.horizontalAdvance(' ');
    if (textEnd > value->x()) {
        value->setGeometry(textEnd, value->y(), value->x() + value->width() - textEnd,
                           value->height());
    }
}

void showLoggedIn(QLabel *caption, QLabel *value, const std::string &signature) {
    const int screenWidth = value->parentWidget()->width();
    const int margin = px(120);
    value->setText(QString::fromStdString(signature));
    const int beyond = value->x() + value->sizeHint().width() - (screenWidth - margin);
    const int shift = std::clamp(beyond, 0, std::max(0, caption->x() - screenWidth / 2));
    caption->move(caption->x() - shift, caption->y());
    value->move(value->x() - shift, value->y());
    value->setMinimumWidth(value->width());
    value->setMaximumWidth(screenWidth - margin - value->x());
    showValue(value, value->text());
}

QString dataCaption(const std::string &text) {
    return QString::fromStdString(text).replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QLabel *makeLabel(QWidget *parent, const char *name, const QString &caption, int left, int top,
                  int width, int height) {
    auto *label = makeControl<QLabel>(parent, name, caption);
    placeTwips(label, left, top, width, height);
    return label;
}

QPushButton *makeButton(QWidget *parent, const char *name, const QString &caption, int left,
                        int top, int width, int height) {
    auto *button = makeControl<QPushButton>(parent, name, caption);
    placeTwips(button, left, top, width, height);
    button->setAutoDefault(false);
    return button;
}

QLabel *makeValueLabel(QWidget *parent, const char *name, int left, int top, int width, int height,
                       std::optional<int> nextCaptionLeft) {
    QLabel *label = makeLabel(parent, name, QString(), left, top, width, height);
    label->setMinimumWidth(px(width));
    if (nextCaptionLeft) {
        label->setMaximumWidth(px(*nextCaptionLeft - 120 - left));
    }
    return label;
}

platform::FlexGrid *makeProductGrid(QWidget *parent, const char *name,
                                    const ProductGridShape &shape, platform::ImageList pictures,
                                    int left, int top, int width, int height) {
    auto *grid = makeControl<platform::FlexGrid>(parent, name);
    placeTwips(grid, left, top, width, height);
    grid->setImageList(std::move(pictures));
    grid->setCols(shape.Cols);
    grid->setRows(shape.RowsAtStart);
    grid->setFixedRows(shape.FixedRows);
    grid->setFixedCols(shape.FixedCols);
    return grid;
}

void centreOnOwner(QWidget *dialog, const QWidget *owner) {
    dialog->move(owner->frameGeometry().center() - dialog->rect().center());
}

namespace {

void pressOnKeys(QWidget *screen, QAbstractButton *button, const QList<QKeySequence> &keys) {
    auto *press = new QAction(screen);
    press->setShortcuts(keys);
    press->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    screen->addAction(press);
    QObject::connect(press, &QAction::triggered, button, &QAbstractButton::click);
}

} // namespace

void pressOnEnter(QWidget *screen, QAbstractButton *button) {
    pressOnKeys(screen, button, {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
}

void pressOnEscape(QWidget *screen, QAbstractButton *button) {
    pressOnKeys(screen, button, {QKeySequence(Qt::Key_Escape)});
}

void setUpModalDialog(QDialog *dialog, const char *name, const QString &title, int width,
                      int height) {
    setUpDialogWindow(dialog, CloseBox::Shown);
    dialog->setObjectName(QString::fromLatin1(name));
    dialog->setWindowTitle(title);
    dialog->setWindowModality(Qt::ApplicationModal);
    sizeTwips(dialog, width, height);
    dialog->setFont(dialogFont());
}

QFont dialogFont() {
    QFont font;
    font.setFamilies({QStringLiteral("MS Sans Serif"), QStringLiteral("Microsoft Sans Serif"),
                      QStringLiteral("DejaVu Sans Condensed")});
    font.setPointSizeF(8.25);
    return font;
}

void applyTabOrder(std::initializer_list<std::pair<int, QWidget *>> indexed) {
    std::vector<std::pair<int, QWidget *>> order(indexed);
    std::stable_sort(order.begin(), order.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (size_t i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order[i - 1].second, order[i].second);
    }
    if (!order.empty()) {
        order.front().second->setFocus(Qt::OtherFocusReason);
    }
}

} // namespace mirelo::screens

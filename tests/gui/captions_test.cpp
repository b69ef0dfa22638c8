#include "screen_test.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QStyle>
#include <QStyleOptionButton>
#include <gtest/gtest.h>

using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

class CaptionsTest : public support::ScreenTest {};

// The width a caption needs to be read whole in the widget's own font, line by line.
int textWidth(const QWidget &widget, const QString &text) {
    int widest = 0;
    for (const QString &line : QString(text).remove(QLatin1Char('&')).split(QLatin1Char('\n'))) {
        widest = std::max(widest, widget.fontMetrics().horizontalAdvance(line.trimmed()));
    }
    return widest;
}

// The room a widget leaves its caption: a label its contents, a check box what its indicator
// leaves, a button what its frame leaves.
int roomFor(const QWidget &widget) {
    const QStyle &style = *widget.style();
    if (qobject_cast<const QCheckBox *>(&widget) != nullptr) {
        return widget.width() - style.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &widget) -
               style.pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &widget);
    }
    if (qobject_cast<const QAbstractButton *>(&widget) != nullptr) {
        QStyleOptionButton option;
        option.initFrom(&widget);
        return style.subElementRect(QStyle::SE_PushButtonContents, &option, &widget).width();
    }
    return static_cast<const QLabel &>(widget).contentsRect().width();
}

// The control stacked above a label that hides part of the label's text, or nothing. The text
// stands in the label where its alignment puts it, and reaches down as far as the ink of its
// last line.
std::string coveringSibling(const QLabel &label, const QString &caption) {
    const QFontMetrics metrics = label.fontMetrics();
    const int lines = int(caption.count('\n')) + 1;
    const QRect contents = label.contentsRect();
    int top = contents.top();
    if (label.alignment() & Qt::AlignVCenter) {
        top += (contents.height() - metrics.lineSpacing() * (lines - 1) - metrics.height()) / 2;
    }
    const QString lastLine = caption.section(QLatin1Char('\n'), -1);
    const int inkHeight = metrics.lineSpacing() * (lines - 1) + metrics.ascent() +
                          metrics.tightBoundingRect(lastLine).bottom() + 1;
    const QRect text(label.mapToParent(QPoint(contents.left(), top)),
                     QSize(textWidth(label, caption), inkHeight));
    const QObjectList &siblings = label.parentWidget()->children();
    for (auto above = siblings.begin() + siblings.indexOf(&label) + 1; above != siblings.end();
         ++above) {
        const auto *sibling = qobject_cast<const QWidget *>(*above);
        if (sibling != nullptr && !sibling->isHidden() && sibling->geometry().intersects(text)) {
            return sibling->objectName().toStdString();
        }
    }
    return {};
}

// Every fixed caption of every screen, as it stands before any patient fills the screen, can
// be read whole: the designed sizes were measured in a narrower font than the one drawn here,
// and no control stands over a label's text.
TEST_F(CaptionsTest, every_fixed_caption_of_every_screen_shows_whole) {
    const std::vector<std::pair<const char *, QWidget *>> screens = {
        {"frmSplash", &Screen<frmSplash>()},
        {"frmMain", &Screen<frmMain>()},
        {"frmShowPatient", &Screen<frmShowPatient>()},
        {"frmExtendedInfo", &Screen<frmExtendedInfo>()},
        {"frmMedicalNote", &Screen<frmMedicalNote>()},
        {"frmAllergicExtendedInfo", &Screen<frmAllergicExtendedInfo>()},
        {"frmAllergicHistory", &Screen<frmAllergicHistory>()},
        {"frmPatInfo", &Screen<frmPatInfo>()},
        {"frmAbout", &Screen<frmAbout>()},
        {"frmSettings", &Screen<frmSettings>()},
    };
    for (const auto &[name, screen] : screens) {
        for (QWidget *widget : screen->findChildren<QWidget *>()) {
            QString caption;
            if (const auto *label = qobject_cast<QLabel *>(widget); label && !label->wordWrap()) {
                caption = label->text();
            } else if (const auto *button = qobject_cast<QAbstractButton *>(widget)) {
                caption = button->text();
            }
            // A check box drawn as its box alone shows no caption of its own: the label or the
            // picture beside it is what the user reads.
            if (qobject_cast<QCheckBox *>(widget) != nullptr && roomFor(*widget) <= 0) {
                continue;
            }
            if (caption.isEmpty() || widget->isHidden()) {
                continue;
            }
            const std::string where = std::string(name) + "." + widget->objectName().toStdString();
            EXPECT_LE(textWidth(*widget, caption), roomFor(*widget)) << where;
            if (const auto *label = qobject_cast<QLabel *>(widget)) {
                EXPECT_EQ(coveringSibling(*label, caption), "") << where;
            }
        }
    }
}

} // namespace

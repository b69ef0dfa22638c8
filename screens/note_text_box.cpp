#include "screens/note_text_box.h"

#include "screens/screen_layout.h"

namespace mirelo::screens {

QPlainTextEdit *makeNoteTextBox(QWidget *parent, const char *name) {
    auto *box = makeControl<QPlainTextEdit>(parent, name);
    box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    box->setTabChangesFocus(true);
    return box;
}

std::string BoxText(const QPlainTextEdit *box) {
    return box->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n")).toStdString();
}

void setBoxText(QPlainTextEdit *box, const std::string &text) {
    box->setPlainText(
        QString::fromStdString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

} // namespace mirelo::screens

#include "screens/note_text_box.h"

#include "screens/screen_layout.h"
#include "screens/writable_text.h"

#include <QMimeData>

namespace mirelo::screens {
namespace {

// Keys bring no control character into a note; a paste or a drop brings text in here, and leaves
// them out too.
class NoteTextBox : public QPlainTextEdit {
  public:
    using QPlainTextEdit::QPlainTextEdit;

  protected:
    void insertFromMimeData(const QMimeData *source) override {
        QMimeData writable;
        writable.setText(WritableText(source->text()));
        QPlainTextEdit::insertFromMimeData(&writable);
    }
};

} // namespace

QPlainTextEdit *makeNoteTextBox(QWidget *parent, const char *name, int left, int top, int width,
                                int height) {
    auto *box = makeControl<NoteTextBox>(parent, name);
    box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    box->setTabChangesFocus(true);
    placeTwips(box, left, top, width, height);
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

#include "screens/writable_text.h"

#include "platform/xml_document.h"

#include <QLineEdit>
#include <QValidator>

namespace mirelo::screens {
namespace {

// A validator may change what it is given: the box then holds the text as changed.
class WritableTextValidator : public QValidator {
  public:
    using QValidator::QValidator;

    State validate(QString &input, int &position) const override {
        position = static_cast<int>(WritableText(input.left(position)).size());
        input = WritableText(input);
        return Acceptable;
    }
};

} // namespace

QString WritableText(const QString &text) {
    QString kept;
    kept.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            kept += text[i];
            kept += text[++i];
        } else if (platform::IsXmlCharacter(text[i].unicode())) {
            kept += text[i];
        }
    }
    return kept;
}

void keepWritableText(QLineEdit *box) {
    box->setValidator(new WritableTextValidator(box));
}

} // namespace mirelo::screens

#include "core/personal_number.h"

#include <QRegularExpression>

namespace mirelo {

bool IsPersonalNumber(const std::string &text) {
    static const QRegularExpression Number(
        QRegularExpression::anchoredPattern(QStringLiteral("([0-9]{2})?[0-9]{6}[-+]?[0-9]{4}")));
    return Number.match(QString::fromStdString(text)).hasMatch();
}

} // namespace mirelo

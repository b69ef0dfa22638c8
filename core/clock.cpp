#include "core/clock.h"

namespace mirelo {
namespace {

QDateTime &frozen() {
    static QDateTime moment;
    return moment;
}

} // namespace

QDateTime Now() {
    return frozen().isValid() ? frozen() : QDateTime::currentDateTime();
}

void freezeClockForTesting(const QDateTime &moment) {
    frozen() = moment;
}

std::string LocalTimestamp() {
    return Now().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
}

} // namespace mirelo

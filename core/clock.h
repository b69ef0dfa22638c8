#pragma once

#include <QDateTime>
#include <string>

namespace mirelo {

// "Now", through one seam so that timestamps and dated names can be frozen in tests.
QDateTime Now();
void freezeClockForTesting(const QDateTime &moment); // an invalid moment thaws it

// The local timestamp written into files: the Swedish regional form, date first.
std::string LocalTimestamp();

} // namespace mirelo

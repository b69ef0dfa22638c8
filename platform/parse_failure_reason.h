#pragma once

#include <string>

struct _xmlError;

namespace mirelo::platform {

// The reason a parse failed, in Swedish, as it goes into a box after "Anledning: ", with the
// line and column where the parser stopped.
std::string ParseFailureReason(const _xmlError &error);

} // namespace mirelo::platform

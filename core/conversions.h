#pragma once

#include <cstdint>
#include <string>

namespace mirelo {

// The numeric reads of flags and counts: blanks around the number are allowed; the empty
// text and anything that isn't a number fail with a type mismatch (13).
int16_t CInt(const std::string &text);
double CDbl(const std::string &text);
// A number is true unless it is 0; "True" and "False" are accepted in any case.
bool CBool(const std::string &text);

} // namespace mirelo

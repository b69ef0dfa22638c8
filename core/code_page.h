#pragma once

#include <string>

namespace mirelo {

// The Western single-byte code page (Windows-1252) in which patient files are stored.
// Every byte decodes: the five bytes the code page leaves unassigned map to the C1 controls
// of the same value. A character the code page doesn't hold becomes "?".
std::string Utf8ToCodePage(const std::string &utf8);
std::string CodePageToUtf8(const std::string &bytes);

} // namespace mirelo

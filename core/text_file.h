#pragma once

#include <string>

namespace mirelo {

// Whole files in and out, one byte per character, no byte order mark, line ends untouched.
// Writing replaces the content in place: no temporary file, no backup.
std::string ReadTextFile(const std::string &path);
void WriteTextFile(const std::string &text, const std::string &path);

} // namespace mirelo

#pragma once

#include <string>

namespace mirelo::testing {

// Files byte for byte, read and written without the program's own file functions, so that
// what a test or a fuzz run checks is not seen through the code under test.
std::string readBytes(const std::string &path);
void writeBytes(const std::string &path, const std::string &bytes);

} // namespace mirelo::testing

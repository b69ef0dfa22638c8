#pragma once

#include <string>

namespace mirelo::testing {

// Files byte for byte, read and written without the program's own file functions, so that
// what a test or a fuzz run checks is not seen through the code under test.
std::string readBytes(const std::string &path);
void writeBytes(const std::string &path, const std::string &bytes);
// A message as the service leaves it in the inbox: its last change, a minute before the clock's
// now unless told, is old enough for the next scan to take it in.
void writeFinishedMessage(const std::string &path, const std::string &bytes, int secondsAgo = 60);

// Scrambles and unscrambles by the rule itself, independent of the code under test: even codes
// up by 3, odd codes up by 5, within the byte. Works on single-byte text. The rule maps the 256
// byte values onto themselves, so every possible stored file is the image of some plain text.
std::string scrambleBytes(const std::string &latin1);
std::string unscrambleBytes(const std::string &stored);

} // namespace mirelo::testing

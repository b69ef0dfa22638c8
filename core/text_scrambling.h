#pragma once

#include <string>

namespace mirelo {

// The shift that keeps a patient file from being read as plain XML by any other tool: even
// codes go up by 3, odd codes by 5. Plain text is UTF-8; stored text is the code page's bytes.
// û, ý, þ and ÿ can't be shifted (their codes would leave the byte range), a character outside
// the code page has no code to shift, and stored codes 0, 1, 2 and 4 can't be read back: each
// fails the whole operation (run-time error 5).
std::string ScrambleText(const std::string &plainText);
std::string ScrambleText(std::string &&plainText);
std::string UnscrambleText(const std::string &storedText);

// Whether ScrambleText stores the character as it stands. A patient file's text writes every
// other character as a character reference, which is plain ASCII to the shift.
bool CanScramble(char32_t c);

} // namespace mirelo

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace mirelo {

// A change made to every code-page byte on its way through a conversion: the byte b becomes
// recoding[b]. A negative entry is a byte that has no place, and it fails the whole
// conversion with run-time error 5, returning nothing partial.
using ByteRecoding = std::array<int16_t, 256>;

// The Western single-byte code page (Windows-1252) in which patient files are stored.
// Every byte decodes: the five bytes the code page leaves unassigned map to the C1 controls
// of the same value. A character the code page doesn't hold fails the conversion with run-time
// error 5, as a byte without a place does: nothing stands in for it.
std::string Utf8ToCodePage(const std::string &utf8);
std::string CodePageToUtf8(const std::string &bytes);

// The same conversions with each code-page byte recoded on the way, in one pass over the text:
// after the code page on the way in, before it on the way out.
std::string Utf8ToCodePage(const std::string &utf8, const ByteRecoding &recoding);
// The same in the text's own buffer, which a file's whole text spares a second one.
std::string Utf8ToCodePage(std::string &&utf8, const ByteRecoding &recoding);
std::string CodePageToUtf8(const std::string &bytes, const ByteRecoding &recoding);

// The character's byte in the code page, or -1 where the code page doesn't hold it.
int16_t CodePageCode(char32_t c);

} // namespace mirelo

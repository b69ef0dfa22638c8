#include "core/text_scrambling.h"

#include "core/code_page.h"

namespace mirelo {
namespace {

// Codes that the shift would take out of the byte range have no entry: they fail.
ByteRecoding shiftTable(bool scrambling) {
    ByteRecoding table{};
    for (int code = 0; code < 256; ++code) {
        const bool even = code % 2 == 0;
        const int shifted =
            scrambling ? (even ? code + 3 : code + 5) : (even ? code - 5 : code - 3);
        table[code] = static_cast<int16_t>(shifted >= 0 && shifted <= 255 ? shifted : -1);
    }
    return table;
}

const ByteRecoding &scrambling() {
    static const ByteRecoding scramble = shiftTable(true);
    return scramble;
}

} // namespace

std::string ScrambleText(const std::string &plainText) {
    return Utf8ToCodePage(plainText, scrambling());
}

std::string ScrambleText(std::string &&plainText) {
    return Utf8ToCodePage(std::move(plainText), scrambling());
}

bool CanScramble(char32_t c) {
    const int16_t code = CodePageCode(c);
    return code >= 0 && scrambling()[code] >= 0;
}

std::string UnscrambleText(const std::string &storedText) {
    static const ByteRecoding unscramble = shiftTable(false);
    return CodePageToUtf8(storedText, unscramble);
}

} // namespace mirelo

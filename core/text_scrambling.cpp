#include "core/text_scrambling.h"

#include "core/code_page.h"
#include "core/mirelo_error.h"

namespace mirelo {
namespace {

char toCode(int code) {
    if (code < 0 || code > 255) {
        runtime::raise(runtime::InvalidArgument);
    }
    return static_cast<char>(code);
}

} // namespace

std::string ScrambleText(const std::string &plainText) {
    const std::string plain = Utf8ToCodePage(plainText);
    std::string stored(plain.size(), '\0');
    for (size_t i = 0; i < plain.size(); ++i) {
        const int c = static_cast<unsigned char>(plain[i]);
        stored[i] = toCode(c % 2 == 0 ? c + 3 : c + 5);
    }
    return stored;
}

std::string UnscrambleText(const std::string &storedText) {
    std::string plain(storedText.size(), '\0');
    for (size_t i = 0; i < storedText.size(); ++i) {
        const int s = static_cast<unsigned char>(storedText[i]);
        plain[i] = toCode(s % 2 == 1 ? s - 3 : s - 5);
    }
    return CodePageToUtf8(plain);
}

} // namespace mirelo

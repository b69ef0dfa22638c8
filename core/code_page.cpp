#include "core/code_page.h"

#include <array>
#include <unordered_map>

namespace mirelo {
namespace {

// Windows-1252 bytes 0x80 to 0x9F; the unassigned ones keep their own value.
constexpr std::array<char32_t, 32> HighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char32_t decodeByte(unsigned char byte) {
    return byte >= 0x80 && byte < 0xA0 ? HighControls[byte - 0x80] : char32_t(byte);
}

char encodeCharacter(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
        return static_cast<char>(c);
    }
    static const std::unordered_map<char32_t, char> high = [] {
        std::unordered_map<char32_t, char> map;
        for (size_t i = 0; i < HighControls.size(); ++i) {
            map[HighControls[i]] = static_cast<char>(0x80 + i);
        }
        return map;
    }();
    const auto found = high.find(c);
    return found == high.end() ? '?' : found->second;
}

void appendUtf8(std::string &out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

} // namespace

std::string Utf8ToCodePage(const std::string &utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    for (size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (lead >= 0x80 && lead < 0xC0) {
            length = 1; // a stray continuation byte is no character of the code page
        }
        char32_t c = length == 1 ? lead : lead & (0x3F >> (length - 1));
        bool valid = lead < 0x80 || length > 1;
        for (size_t k = 1; k < length; ++k) {
            const auto next = i + k < utf8.size() ? static_cast<unsigned char>(utf8[i + k]) : 0;
            if ((next & 0xC0) != 0x80) {
                valid = false;
                length = k;
                break;
            }
            c = (c << 6) | (next & 0x3F);
        }
        bytes += valid ? encodeCharacter(c) : '?';
        i += length;
    }
    return bytes;
}

std::string CodePageToUtf8(const std::string &bytes) {
    std::string utf8;
    utf8.reserve(bytes.size() + bytes.size() / 8);
    for (const char byte : bytes) {
        appendUtf8(utf8, decodeByte(static_cast<unsigned char>(byte)));
    }
    return utf8;
}

} // namespace mirelo

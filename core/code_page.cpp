#include "core/code_page.h"

#include "core/mirelo_error.h"

#include <cstring>
#include <memory>
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

unsigned char encodeCharacter(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
        return static_cast<unsigned char>(c);
    }
    static const std::unordered_map<char32_t, unsigned char> high = [] {
        std::unordered_map<char32_t, unsigned char> map;
        for (size_t i = 0; i < HighControls.size(); ++i) {
            map[HighControls[i]] = static_cast<unsigned char>(0x80 + i);
        }
        return map;
    }();
    const auto found = high.find(c);
    return found == high.end() ? '?' : found->second;
}

// A byte's character as UTF-8: one to three bytes.
struct Utf8Sequence {
    unsigned char length = 0;
    char bytes[3] = {};
};

Utf8Sequence encodeUtf8(char32_t c) {
    Utf8Sequence sequence;
    if (c < 0x80) {
        sequence.length = 1;
        sequence.bytes[0] = static_cast<char>(c);
    } else if (c < 0x800) {
        sequence.length = 2;
        sequence.bytes[0] = static_cast<char>(0xC0 | (c >> 6));
        sequence.bytes[1] = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        sequence.length = 3;
        sequence.bytes[0] = static_cast<char>(0xE0 | (c >> 12));
        sequence.bytes[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        sequence.bytes[2] = static_cast<char>(0x80 | (c & 0x3F));
    }
    return sequence;
}

const std::array<Utf8Sequence, 256> &byteCharacters() {
    static const std::array<Utf8Sequence, 256> table = [] {
        std::array<Utf8Sequence, 256> sequences;
        for (int byte = 0; byte < 256; ++byte) {
            sequences[byte] = encodeUtf8(decodeByte(static_cast<unsigned char>(byte)));
        }
        return sequences;
    }();
    return table;
}

const ByteRecoding &unchanged() {
    static const ByteRecoding identity = [] {
        ByteRecoding recoding{};
        for (int byte = 0; byte < 256; ++byte) {
            recoding[byte] = static_cast<int16_t>(byte);
        }
        return recoding;
    }();
    return identity;
}

// The character that starts at utf8[i] as its code-page byte, and how many bytes it took.
unsigned char codePageByteAt(const std::string &utf8, size_t i, size_t &length) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
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
    return valid ? encodeCharacter(c) : '?';
}

char recoded(const ByteRecoding &recoding, unsigned char byte) {
    const int16_t value = recoding[byte];
    if (value < 0) {
        runtime::raise(runtime::InvalidArgument);
    }
    return static_cast<char>(value);
}

} // namespace

std::string Utf8ToCodePage(const std::string &utf8) {
    return Utf8ToCodePage(utf8, unchanged());
}

std::string CodePageToUtf8(const std::string &bytes) {
    return CodePageToUtf8(bytes, unchanged());
}

// Patient files are mostly ASCII, which needs no decoding: only a byte with its high bit set
// starts the slow way through a character.
std::string Utf8ToCodePage(const std::string &utf8, const ByteRecoding &recoding) {
    std::string bytes(utf8.size(), '\0');
    size_t out = 0;
    for (size_t i = 0; i < utf8.size();) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            bytes[out++] = recoded(recoding, byte);
            ++i;
            continue;
        }
        size_t length = 0;
        bytes[out++] = recoded(recoding, codePageByteAt(utf8, i, length));
        i += length;
    }
    bytes.resize(out);
    return bytes;
}

std::string CodePageToUtf8(const std::string &bytes, const ByteRecoding &recoding) {
    const std::array<Utf8Sequence, 256> &characters = byteCharacters();
    // Three bytes of UTF-8 at most for each byte; only what is written is copied out.
    const std::unique_ptr<char[]> utf8(new char[bytes.size() * 3 + 1]);
    char *out = utf8.get();
    for (const char byte : bytes) {
        const auto plain =
            static_cast<unsigned char>(recoded(recoding, static_cast<unsigned char>(byte)));
        if (plain < 0x80) {
            *out++ = static_cast<char>(plain);
            continue;
        }
        const Utf8Sequence &sequence = characters[plain];
        std::memcpy(out, sequence.bytes, sequence.length);
        out += sequence.length;
    }
    return std::string(utf8.get(), out);
}

} // namespace mirelo

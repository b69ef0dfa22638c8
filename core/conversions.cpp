#include "core/conversions.h"

#include "core/mirelo_error.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

namespace mirelo {
namespace {

std::string stripBlanks(const std::string &text) {
    size_t first = 0;
    size_t last = text.size();
    while (first < last && std::isspace(static_cast<unsigned char>(text[first]))) {
        ++first;
    }
    while (last > first && std::isspace(static_cast<unsigned char>(text[last - 1]))) {
        --last;
    }
    return text.substr(first, last - first);
}

std::optional<double> parseNumber(const std::string &text) {
    const std::string number = stripBlanks(text);
    if (number.empty()) {
        return std::nullopt;
    }
    // The flags of a file are plain digits, read a dozen times per product: they need no
    // conversion through the C library, which gives the same value for them.
    if (number.size() <= 15 &&
        std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        double value = 0;
        for (const char c : number) {
            value = value * 10 + (c - '0');
        }
        return value;
    }
    for (const char c : number) {
        if (!std::isdigit(static_cast<unsigned char>(c)) && c != '.' && c != ',' && c != '-' &&
            c != '+' && c != 'e' && c != 'E') {
            return std::nullopt;
        }
    }
    std::string dotted = number;
    for (char &c : dotted) {
        if (c == ',') {
            c = '.';
        }
    }
    char *end = nullptr;
    const double value = std::strtod(dotted.c_str(), &end);
    if (end != dotted.c_str() + dotted.size()) {
        return std::nullopt;
    }
    return value;
}

double requireNumber(const std::string &text) {
    const auto value = parseNumber(text);
    if (!value) {
        runtime::raise(runtime::TypeMismatch);
    }
    return *value;
}

template <typename Integer> Integer roundToInteger(double value) {
    // Halves go to the even neighbour, as the run time rounds.
    const double rounded = std::nearbyint(value);
    if (rounded < std::numeric_limits<Integer>::min() ||
        rounded > std::numeric_limits<Integer>::max()) {
        runtime::raise(runtime::Overflow);
    }
    return static_cast<Integer>(rounded);
}

} // namespace

int16_t CInt(const std::string &text) {
    return roundToInteger<int16_t>(requireNumber(text));
}

double CDbl(const std::string &text) {
    return requireNumber(text);
}

bool CBool(const std::string &text) {
    const std::string word = stripBlanks(text);
    std::string lower;
    for (const char c : word) {
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (lower == "true") {
        return true;
    }
    if (lower == "false") {
        return false;
    }
    return requireNumber(text) != 0.0;
}

} // namespace mirelo

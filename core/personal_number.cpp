#include "core/personal_number.h"

#include <regex>

namespace mirelo {

bool IsPersonalNumber(const std::string &text) {
    static const std::regex Number("([0-9]{2})?[0-9]{6}[-+]?[0-9]{4}", std::regex::optimize);
    return std::regex_match(text, Number);
}

} // namespace mirelo

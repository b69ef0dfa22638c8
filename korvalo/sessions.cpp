#include "sessions.h"

#include <cstdio>
#include <random>

namespace korvalo {

std::string Sessions::open(const std::string &prescriber) {
    static std::random_device random;
    std::string key;
    for (int part = 0; part < 4; ++part) {
        char hex[9];
        std::snprintf(hex, sizeof hex, "%08x", static_cast<unsigned>(random()));
        key += hex;
    }
    const std::lock_guard lock(mutex_);
    prescribers_[key] = prescriber;
    return key;
}

std::optional<std::string> Sessions::prescriberOf(const std::string &key) const {
    const std::lock_guard lock(mutex_);
    const auto found = prescribers_.find(key);
    if (found == prescribers_.end()) {
        return std::nullopt;
    }
    return found->second;
}

} // namespace korvalo

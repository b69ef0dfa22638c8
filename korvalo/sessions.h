#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace korvalo {

// The hand-overs that were let in, each under a key that the prescribing form carries back.
// The form itself never names its prescriber: a post without a key given here prescribes
// nothing, so no one signs in another physician's name.
class Sessions {
  public:
    // A new key, not to be guessed, for a physician who prescribes under this name.
    std::string open(const std::string &prescriber);
    // The name the key was given for, or none.
    std::optional<std::string> prescriberOf(const std::string &key) const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, std::string> prescribers_;
};

} // namespace korvalo

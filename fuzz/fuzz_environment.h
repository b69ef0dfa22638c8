#pragma once

#include "file_bytes.h"
#include "platform/message_box.h"

#include <map>
#include <string>
#include <vector>

namespace mirelo::fuzzing {

// Thrown by the end-of-process handler, so that an input that ends the process ends only the
// one operation under test and the outcome can still be checked.
struct ProcessEnded {};

// One application directory for the whole run, emptied before each input: in/ and data/ as an
// installation has them, gDataPath at data/, a frozen clock, boxes recorded and answered OK,
// and the end of the process recorded. It lies a few folders down in a private folder, so
// that a file written above the application directory is still inside that folder.
class FuzzEnvironment {
  public:
    static FuzzEnvironment &instance();

    // A fresh application directory and fresh session values for the next input.
    void reset();

    std::string path(const std::string &relative) const { return appDir_ + "/" + relative; }

    // Every regular file under the private folder, by path, with its bytes.
    std::map<std::string, std::string> allFiles() const;

    std::vector<platform::MsgBoxRequest> boxes;
    bool processEnded = false;

  private:
    FuzzEnvironment();
    std::string root_;
    std::string appDir_;
};

using testing::readBytes;
using testing::writeBytes;

// The stored bytes of a patient file whose plain bytes are given, by the scrambling rule
// itself (even codes up by 3, odd codes up by 5, within the byte). The rule maps the 256 byte
// values onto themselves, so every possible stored file is the image of some input.
std::string scrambledBytes(const std::string &plain);

// Ends the run with the input as a finding: what was expected and did not hold.
[[noreturn]] void violated(const std::string &expectation);

} // namespace mirelo::fuzzing

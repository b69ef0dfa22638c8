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
    const std::string &appDir() const { return appDir_; }
    // The private folder around the application directory.
    const std::string &root() const { return root_; }

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
using testing::scrambleBytes;
using testing::writeBytes;

// Ends the run with the input as a finding: what was expected and did not hold.
[[noreturn]] void violated(const std::string &expectation);

} // namespace mirelo::fuzzing

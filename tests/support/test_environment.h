#pragma once

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "file_bytes.h"
#include "platform/message_box.h"

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <deque>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace mirelo::testing {

using ::testing::AllOf, ::testing::ElementsAre, ::testing::HasSubstr, ::testing::IsEmpty,
    ::testing::Not, ::testing::StartsWith;
using Texts = std::vector<std::string>;

// Thrown by the test's end-of-process handler, so a test can assert that the process ended.
struct ProcessEnded {};

// Every test works in a temporary application directory of its own, with in/ and data/ laid
// out as an installation has them, gDataPath pointing at data/, a frozen clock, scripted
// message boxes, a recorded end of the process, no browser of its own, and waits for a patient's
// lock that cost no time.
class ApplicationTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string appDir() const { return appDir_; }
    std::string path(const std::string &relative) const { return appDir_ + "/" + relative; }

    // The boxes shown so far, and the answers the next boxes get (OK or Yes otherwise).
    std::vector<platform::MsgBoxRequest> boxes;
    std::deque<platform::MsgBoxResult> nextAnswers;
    bool processEnded = false;

    // Every box shown so far as one line: its icon and buttons in brackets, then its text, as in
    // "[stop] Filen hittades inte" or "[warning yes/no] Vill du ...". A title other than the
    // program's own stands in the brackets too. Forgets the boxes.
    Texts said();

    // The frozen clock's moment, as the program writes it.
    static constexpr const char *Now = "2026-03-15 14:05:09";

  private:
    QTemporaryDir dir_{QDir::tempPath() + "/mirelo-test-XXXXXX"};
    std::string appDir_ = dir_.path().toStdString();
};

// The names of the files and folders directly under a folder.
std::set<std::string> filesIn(const std::string &folder);

// Every file under a folder, by its path within it, and its bytes; the data folder's lock file,
// which holds nothing and stays once made, left out.
std::map<std::string, std::string> filesUnder(const std::string &folder);

// The files under a folder whose bytes hold the text, all but the one left out: a secret is to
// be in none of them.
std::vector<std::string> filesHolding(const std::string &folder, const std::string &text,
                                      const std::string &leftOut = {});

std::string latin1ToUtf8(const std::string &latin1);

} // namespace mirelo::testing

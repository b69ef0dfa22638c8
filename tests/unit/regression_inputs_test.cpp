#include "intake/inbox_scan.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>

using namespace mirelo;

namespace {

namespace fs = std::filesystem;

std::vector<std::string> keptInputs() {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(MIRELO_REGRESSIONS_DIR)) {
        if (entry.path().extension() == ".input") {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Every file under the application directory with its bytes.
std::map<std::string, std::string> allFiles(const std::string &folder) {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            files[entry.path().string()] = mirelo::testing::readBytes(entry.path().string());
        }
    }
    return files;
}

// Every input kept under tests/regressions once crashed intake or spoiled a file. Taken in by the
// real inbox scan, each must end as intake always ends: no box, the message gone and every
// patient file it wrote well-formed; or a box, with every file and the message untouched.
class RegressionInputTest : public mirelo::testing::ApplicationTest,
                            public ::testing::WithParamInterface<std::string> {};

TEST_P(RegressionInputTest, ends_in_a_known_outcome) {
    const std::string input =
        mirelo::testing::readBytes(std::string(MIRELO_REGRESSIONS_DIR) + "/" + GetParam());
    const std::string separator = "\n=====PATIENT=====\n";
    const size_t split = input.find(separator);
    mirelo::testing::writeBytes(path("in/message.xml"), input.substr(0, split));
    if (split != std::string::npos) {
        mirelo::testing::writeBytes(
            path("data/P1.xml"),
            mirelo::testing::scrambleBytes(input.substr(split + separator.size())));
    }
    const auto before = allFiles(appDir());

    InboxTimer timer;
    try {
        for (int tick = 0; tick < 10; ++tick) {
            timer.Timer1_Timer([] { return false; }, [] {});
        }
    } catch (const mirelo::testing::ProcessEnded &) {
    }
    const auto after = allFiles(appDir());

    if (!boxes.empty()) {
        EXPECT_EQ(after, before);
        return;
    }
    EXPECT_FALSE(processEnded);
    EXPECT_EQ(after.count(path("in/message.xml")), 0u);
    for (const auto &[file, bytes] : after) {
        const auto old = before.find(file);
        if (file.rfind(path("data/"), 0) == 0 && (old == before.end() || old->second != bytes)) {
            // Fails the test unless the written file parses.
            mirelo::testing::readStoredPatient(file);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kept, RegressionInputTest, ::testing::ValuesIn(keptInputs()),
                         [](const auto &param) {
                             std::string name = param.param.substr(0, param.param.find('.'));
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](unsigned char c) { return !std::isalnum(c); }, '_');
                             return name;
                         });

} // namespace

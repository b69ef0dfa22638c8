#include "intake/inbox_scan.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <map>

namespace mirelo::testing {
namespace {

namespace fs = std::filesystem;

std::map<std::string, std::string> filesUnder(const std::string &folder) {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            files[fs::relative(entry.path(), folder)] = readBytes(entry.path());
        }
    }
    return files;
}

using RegressionInputTest = ApplicationTest;

// Every input kept under tests/regressions once crashed intake or spoiled a file: a message, then
// the plain bytes of the patient's file P1.xml, if any. Taken in by the real inbox scan, each ends
// with no box, the message gone and every patient file it wrote well-formed; or with a box, and
// every file as it was.
TEST_F(RegressionInputTest, every_kept_input_ends_in_a_known_outcome) {
    const std::string separator = "\n=====PATIENT=====\n";
    int inputs = 0;
    for (const auto &entry : fs::directory_iterator(MIRELO_REGRESSIONS_DIR)) {
        if (entry.path().extension() != ".input") {
            continue;
        }
        SCOPED_TRACE(entry.path().filename().string() + ", input " + std::to_string(++inputs));
        fs::remove_all(path("data"));
        fs::create_directory(path("data"));
        const std::string input = readBytes(entry.path());
        const size_t split = input.find(separator);
        writeBytes(path("in/message.xml"), input.substr(0, split));
        if (split != std::string::npos) {
            writeBytes(path("data/P1.xml"), scrambleBytes(input.substr(split + separator.size())));
        }
        const auto before = filesUnder(appDir());
        InboxTimer timer;
        try {
            for (int tick = 0; tick < 10; ++tick) {
                timer.Timer1_Timer([] { return false; }, [] {});
            }
        } catch (const ProcessEnded &) {
        }
        const auto after = filesUnder(appDir());
        if (!said().empty()) {
            EXPECT_EQ(after, before);
            continue;
        }
        EXPECT_FALSE(after.contains("in/message.xml"));
        for (const auto &[file, bytes] : after) {
            if (file.starts_with("data/") && (!before.contains(file) || before.at(file) != bytes)) {
                readStoredPatient(path(file)); // fails the test unless the written file parses
            }
        }
    }
    EXPECT_GE(inputs, 2);
}

} // namespace
} // namespace mirelo::testing

#include "intake/inbox_scan.h"
#include "patient_file_builder.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;

namespace {

// Every input kept under tests/regressions once crashed intake or spoiled a file. Taken in by the
// real inbox scan, each must end as intake always ends: the patient file written and still
// well-formed with the message gone, or a numbered box with the file and the message untouched.
class RegressionInputTest : public mirelo::testing::ApplicationTest,
                            public ::testing::WithParamInterface<std::string> {};

TEST_P(RegressionInputTest, ends_in_a_known_outcome) {
    const std::string input =
        mirelo::testing::readBytes(std::string(MIRELO_REGRESSIONS_DIR) + "/" + GetParam());
    const std::string separator = "\n=====PATIENT=====\n";
    const size_t split = input.find(separator);
    ASSERT_NE(split, std::string::npos);
    mirelo::testing::writeBytes(path("in/message.xml"), input.substr(0, split));
    const std::string patientFile = path("data/P1.xml");
    mirelo::testing::storePatientFile("P1.xml", input.substr(split + separator.size()));
    const std::string before = mirelo::testing::readBytes(patientFile);

    InboxTimer timer;
    try {
        for (int tick = 0; tick < 10; ++tick) {
            timer.Timer1_Timer([] { return false; }, [] {});
        }
    } catch (const mirelo::testing::ProcessEnded &) {
    }

    if (boxes.empty()) {
        EXPECT_FALSE(std::filesystem::exists(path("in/message.xml")));
        // Fails the test unless the written file parses.
        mirelo::testing::readStoredPatient(patientFile);
    } else {
        EXPECT_EQ(mirelo::testing::readBytes(patientFile), before);
        EXPECT_TRUE(std::filesystem::exists(path("in/message.xml")));
    }
}

INSTANTIATE_TEST_SUITE_P(Kept, RegressionInputTest,
                         ::testing::Values("intake-uaf-nested-product.input",
                                           "intake-uaf-nested-medicallist.input"),
                         [](const auto &param) {
                             std::string name = param.param.substr(0, param.param.find('.'));
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace

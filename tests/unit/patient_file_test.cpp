#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "patient_file_builder.h"
#include "records/patient_file.h"
#include "test_environment.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

using namespace mirelo;

namespace {

class PatientFileTest : public mirelo::testing::ApplicationTest {
  protected:
    // A stored file written by the rule itself, from ISO-8859-1 text.
    void storeRaw(const std::string &pnr, const std::string &latin1) {
        mirelo::testing::writeBytes(PatientFilePath(pnr), mirelo::testing::scrambleBytes(latin1));
    }
};

const std::string Stored =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n"
    "<Patient>\r\n\t<PatientData>\r\n\t\t<FamilyName>\xC5str\xF6m</FamilyName>"
    "\r\n\t\t<GeneralInfo>rad ett\tmed tabb</GeneralInfo>\r\n\t</PatientData>"
    "\r\n</Patient>\r\n";

TEST_F(PatientFileTest, the_file_is_named_by_the_personal_number_in_the_data_folder) {
    EXPECT_EQ(PatientFilePath("19121212-1212"), appDir() + "/data/19121212-1212.xml");
}

TEST_F(PatientFileTest, reading_unscrambles_drops_every_tab_and_parses) {
    storeRaw("191212121212", Stored);
    const auto patient = ReadPatientFile(PatientFilePath("191212121212"));
    EXPECT_EQ(patient.selectSingleNode("//PatientData/FamilyName").text(), "Åström");
    // A tab inside a value is lost at reading, as it always was.
    EXPECT_EQ(patient.selectSingleNode("//PatientData/GeneralInfo").text(), "rad ettmed tabb");

    // Tabs go wherever they stand: first, last, alone and in runs that cross eight bytes.
    const std::pair<std::string, std::string> texts[] = {
        {"\t<a>\t\tb\t</a>\t", "<a>b</a>"},
        {"<a>1234567\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t8</a>\r\n\t\t", "<a>12345678</a>\r\n"},
        {"<a>Åström\tÖberg</a>", "<a>ÅströmÖberg</a>"},
    };
    for (const auto &[stored, read] : texts) {
        storeRaw("4", mirelo::testing::utf8ToLatin1(stored));
        EXPECT_EQ(ReadPatientText(PatientFilePath("4")), read);
    }

    // The search list keeps the tabs.
    const auto withTabs = ReadPatientFileKeepingTabs(PatientFilePath("191212121212"));
    EXPECT_EQ(withTabs.selectSingleNode("//PatientData/GeneralInfo").text(), "rad ett\tmed tabb");
}

TEST_F(PatientFileTest, a_damaged_file_is_reported_with_its_reason) {
    storeRaw("1", "<Patient><PatientData>");
    try {
        ReadPatientFile(PatientFilePath("1"));
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040204));
        EXPECT_EQ(error.description().rfind("Patientfil är skadad.\r\nAnledning: ", 0), 0u);
        EXPECT_GT(error.description().size(),
                  std::string("Patientfil är skadad.\r\nAnledning: ").size());
    }

    // A plain XML file is noise after unscrambling, and so damaged too.
    mirelo::testing::writeBytes(PatientFilePath("2"), "<Patient/>");
    EXPECT_THROW(ReadPatientFile(PatientFilePath("2")), MireloError);
}

TEST_F(PatientFileTest, writing_stores_the_scrambled_text_and_a_failed_scramble_changes_nothing) {
    storeRaw("3", Stored);
    auto patient = ReadPatientFile(PatientFilePath("3"));
    patient.selectSingleNode("//PatientData/FamilyName").setText("Öberg");
    WritePatientFile(patient, PatientFilePath("3"));

    const std::string plain =
        mirelo::testing::unscrambleBytes(mirelo::testing::readBytes(PatientFilePath("3")));
    EXPECT_EQ(plain.rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    EXPECT_NE(plain.find("<FamilyName>\xD6"
                         "berg</FamilyName>"),
              std::string::npos)
        << plain;

    const std::string before = mirelo::testing::readBytes(PatientFilePath("3"));
    patient.selectSingleNode("//PatientData/FamilyName").setText("Maÿ");
    EXPECT_THROW(WritePatientFile(patient, PatientFilePath("3")), MireloError);
    EXPECT_EQ(mirelo::testing::readBytes(PatientFilePath("3")), before);
}

} // namespace

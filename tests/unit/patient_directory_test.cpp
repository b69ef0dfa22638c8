#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "patient_file_builder.h"
#include "records/patient_directory.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;
using support::patientText;
using support::storePatientFile;

namespace {

class PatientDirectoryTest : public support::ApplicationTest {
  protected:
    void storePatient(const std::string &fileName, const std::string &pnr,
                      const std::string &familyName) {
        storePatientFile(fileName, patientText(pnr, familyName, "Tolvan", {}));
    }
    // Bytes that unscramble to no XML at all: opening such a file fails the search loudly,
    // so a file that stays quiet was never opened.
    void storeDamaged(const std::string &fileName) {
        support::writeBytes(session().gDataPath + fileName, support::scrambleBytes("<Patient>"));
    }

    std::vector<std::string> list1;
};

TEST_F(PatientDirectoryTest,
       SearchPatient_prefix_lists_files_whose_name_and_Pnr_begin_with_the_key) {
    storePatient("191212121212.xml", "191212121212", "Tolvansson");
    storeDamaged("202002022222.xml");
    storeDamaged("191212121213.txt");
    storePatient("191212121214.XML", "191212121214", "Svensson");
    storePatient("1912xml", "1912", "Utan Punkt");
    // Name and contents disagree: passed over without a word.
    storePatient("191299999999.xml", "200001010000", "Annan");
    std::filesystem::create_directory(session().gDataPath + "191200000000.xml");

    const PatientSearchOutcome outcome = SearchPatient("1912", list1);

    EXPECT_FALSE(outcome.openInMedicationView);
    EXPECT_EQ(list1, (std::vector<std::string>{"191212121212 Tolvansson", "191212121214 Svensson",
                                               "1912 Utan Punkt"}));
}

TEST_F(PatientDirectoryTest, SearchPatient_prefix_ignores_case_and_keeps_what_the_list_held) {
    storePatient("AB1212.xml", "AB1212", "Åström");
    list1 = {"tidigare rad"};

    SearchPatient("ab", list1);
    SearchPatient("1", list1);

    EXPECT_EQ(list1, (std::vector<std::string>{"tidigare rad", "AB1212 Åström"}));
}

TEST_F(PatientDirectoryTest, SearchPatient_prefix_keeps_the_tabs_of_the_names_it_lists) {
    storePatientFile("191212121212.xml", patientText("191212121212", "Tolv\tansson", "T", {}));
    SearchPatient("19", list1);
    EXPECT_EQ(list1, (std::vector<std::string>{"191212121212 Tolv\tansson"}));
}

TEST_F(PatientDirectoryTest,
       SearchPatient_prefix_ends_at_the_first_damaged_file_keeping_earlier_lines) {
    storePatient("19120001.xml", "19120001", "Först");
    storeDamaged("19120002.xml");
    storeDamaged("19120003.xml");
    storePatient("19120004.xml", "19120004", "Sist");
    try {
        SearchPatient("1912", list1);
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040204));
        EXPECT_EQ(error.description().rfind("Patientfil är skadad.\r\nAnledning: ", 0), 0u);
    }
    EXPECT_EQ(list1, (std::vector<std::string>{"19120001 Först"}));

    // A match without a family name fails on the missing node; a non-match is never asked.
    list1.clear();
    storePatientFile("20120001.xml", "<Patient><PatientData><Pnr>30</Pnr></PatientData></Patient>");
    EXPECT_NO_THROW(SearchPatient("2012", list1));
    storePatientFile("20120002.xml",
                     "<Patient><PatientData><Pnr>2012</Pnr></PatientData></Patient>");
    try {
        SearchPatient("2012", list1);
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::ObjectNotSet);
    }
    EXPECT_TRUE(list1.empty());
}

TEST_F(PatientDirectoryTest, SearchPatient_whole_number_opens_its_file_directly_and_lists_nothing) {
    storePatient("191212121212.xml", "191212121212", "Tolvansson");
    storeDamaged("191212121313.xml");

    const std::string key = SearchKeyFromText("19121212-1212");
    EXPECT_EQ(key, "191212121212");
    EXPECT_TRUE(IsWholePersonalNumber(key));
    EXPECT_EQ(SearchPatient(key, list1).openInMedicationView, "191212121212");
    EXPECT_TRUE(list1.empty());

    // A damaged file is still opened: the medication view meets the damage and says nothing.
    EXPECT_EQ(SearchPatient("191212121313", list1).openInMedicationView, "191212121313");
    // No file, even with 13 characters: no line and no failure, the number goes to the service.
    EXPECT_FALSE(SearchPatient("191212121219", list1).openInMedicationView);
    EXPECT_FALSE(SearchPatient("1912121212129", list1).openInMedicationView);
    EXPECT_TRUE(list1.empty());

    // One digit short is a prefix, and lists.
    const std::string shortKey = SearchKeyFromText("19121212-121");
    EXPECT_FALSE(IsWholePersonalNumber(shortKey));
    EXPECT_FALSE(SearchPatient(shortKey, list1).openInMedicationView);
    EXPECT_EQ(list1, (std::vector<std::string>{"191212121212 Tolvansson"}));
}

TEST_F(PatientDirectoryTest,
       SearchPatient_finds_a_hyphenated_file_name_only_by_a_key_that_stops_before_the_hyphen) {
    storePatient("19121212-1212.xml", "19121212-1212", "Streck");

    EXPECT_FALSE(SearchPatient(SearchKeyFromText("19121212-1212"), list1).openInMedicationView);
    EXPECT_FALSE(SearchPatient(SearchKeyFromText("191212121"), list1).openInMedicationView);
    EXPECT_TRUE(list1.empty());

    SearchPatient(SearchKeyFromText("19121212"), list1);
    EXPECT_EQ(list1, (std::vector<std::string>{"19121212-1212 Streck"}));
    EXPECT_EQ(PnrOfListLine(list1.front()), "19121212-1212");
    EXPECT_EQ(PnrOfListLine("19 12 Efternamn"), "19");
}

TEST_F(PatientDirectoryTest, SearchPatient_raises_when_the_data_folder_is_gone_in_either_mode) {
    session().gDataPath = appDir() + "/saknas/";
    for (const std::string key : {"1912", "191212121212"}) {
        try {
            SearchPatient(key, list1);
            FAIL() << key;
        } catch (const MireloError &error) {
            EXPECT_EQ(error.number(), runtime::PathNotFound) << key;
        }
    }
    EXPECT_TRUE(list1.empty());
}

} // namespace

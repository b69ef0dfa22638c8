#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "intake/message_to_patient.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
using mirelo::testing::childFields;
using mirelo::testing::Fields;
using mirelo::testing::MessageItem;
using mirelo::testing::PrescriptionMessage;

namespace {

class MessageToPatientTest : public mirelo::testing::ApplicationTest {
  protected:
    std::string dropMessage(const PrescriptionMessage &message, const std::string &name = "m.xml") {
        const std::string file = path("in/" + name);
        mirelo::testing::writePrescriptionMessage(file, message);
        return file;
    }

    std::string dataFile(const std::string &name) { return path("data/" + name); }
};

TEST_F(MessageToPatientTest, a_new_personal_number_starts_a_file_with_the_messages_patient_data) {
    PrescriptionMessage message;
    message.pnr = "19121212-1212";
    message.items = {MessageItem{}};

    EXPECT_EQ(ImportPrescriptionFile(dropMessage(message)), "19121212-1212");

    const std::string stored = mirelo::testing::readBytes(dataFile("19121212-1212.xml"));
    const std::string plain = mirelo::testing::unscrambleBytes(stored);
    EXPECT_EQ(plain.rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    // Swedish letters are stored as their single bytes.
    EXPECT_NE(plain.find("<FamilyName>\xC5str\xF6m</FamilyName>"), std::string::npos) << plain;

    const platform::XmlDocument patient =
        mirelo::testing::readStoredPatient(dataFile("19121212-1212.xml"));
    EXPECT_EQ(patient.documentElement().nodeName(), "Patient");
    const Fields expected = {
        {"FamilyName", "Åström"},      {"FirstGivenName", "Märta"}, {"Pnr", "19121212-1212"},
        {"StreetName", "Ängsvägen 3"}, {"PostalCode", "411 05"},    {"City", "Göteborg"},
        {"GeneralInfo", ""},           {"GeneralInfoBy", ""},       {"GeneralInfoTimestamp", ""},
    };
    EXPECT_EQ(childFields(patient.selectSingleNode("/Patient/PatientData")), expected);
    EXPECT_EQ(patient.selectNodes("/Patient/MedicalList/Product").size(), 1u);
    EXPECT_EQ(patient.documentElement().childNodes().size(), 2u);
}

TEST_F(MessageToPatientTest, a_later_message_overwrites_the_six_fields_and_keeps_the_rest) {
    const std::string earlier =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Patient>\r\n\t<PatientData>"
        "<FamilyName>Berg</FamilyName><FirstGivenName>Nils</FirstGivenName><Pnr>42</Pnr>"
        "<StreetName>Gamla v\xE4gen 1</StreetName><PostalCode>123 45</PostalCode>"
        "<City>Lund</City><GeneralInfo>Diabetes\ntyp 2</GeneralInfo>"
        "<GeneralInfoBy>Doktor Ek</GeneralInfoBy>"
        "<GeneralInfoTimestamp>2026-01-05 09:00:00</GeneralInfoTimestamp></PatientData>"
        "<MedicalList><Product><ID>OLD_1</ID><RegNr>555</RegNr><Checked>1</Checked>"
        "</Product></MedicalList>\r\n</Patient>\r\n";
    mirelo::testing::writeBytes(dataFile("42.xml"), mirelo::testing::scrambleBytes(earlier));

    PrescriptionMessage message;
    message.pnr = "42";
    // The latest message wins, also where it is empty.
    message.postalCode = "";
    EXPECT_EQ(ImportPrescriptionFile(dropMessage(message)), "42");

    const platform::XmlDocument patient = mirelo::testing::readStoredPatient(dataFile("42.xml"));
    const Fields expected = {
        {"FamilyName", "Åström"},
        {"FirstGivenName", "Märta"},
        {"Pnr", "42"},
        {"StreetName", "Ängsvägen 3"},
        {"PostalCode", ""},
        {"City", "Göteborg"},
        {"GeneralInfo", "Diabetes\ntyp 2"},
        {"GeneralInfoBy", "Doktor Ek"},
        {"GeneralInfoTimestamp", "2026-01-05 09:00:00"},
    };
    EXPECT_EQ(childFields(patient.selectSingleNode("/Patient/PatientData")), expected);
    // An item-less message writes the file without touching the list.
    const auto products = patient.selectNodes("//Product");
    ASSERT_EQ(products.size(), 1u);
    EXPECT_EQ(products[0].selectSingleNode("ID").text(), "OLD_1");
    EXPECT_EQ(products[0].selectSingleNode("Checked").text(), "1");
}

TEST_F(MessageToPatientTest, a_file_named_in_another_case_takes_the_message_line_breaks_and_all) {
    PrescriptionMessage first;
    first.items = {MessageItem{}};
    ImportPrescriptionFile(dropMessage(first));
    std::filesystem::rename(dataFile("191212121212.xml"), dataFile("191212121212.XML"));

    // The sender writes a line break inside a value as character references.
    PrescriptionMessage second = first;
    second.items[0].itemId = "2";
    second.items[0].dosage = "1 tablett@2 tabletter";
    std::string text = mirelo::testing::prescriptionMessageText(second);
    text.replace(text.find('@'), 1, "&#13;&#10;");
    mirelo::testing::writeBytes(path("in/m.xml"), text);
    ImportPrescriptionFile(path("in/m.xml"));

    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path("data"))) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_EQ(names, std::vector<std::string>{"191212121212.XML"});
    const std::string stored = mirelo::testing::readBytes(dataFile("191212121212.XML"));
    // CR is stored as 18 and LF as 13.
    EXPECT_NE(stored.find(mirelo::testing::scrambleBytes("1 tablett\r\n2 tabletter")),
              std::string::npos);
    const platform::XmlDocument patient =
        mirelo::testing::readStoredPatient(dataFile("191212121212.XML"));
    EXPECT_EQ(patient.selectNodes("//Product").size(), 2u);
}

TEST_F(MessageToPatientTest, an_item_less_message_for_a_new_patient_writes_no_MedicalList) {
    PrescriptionMessage message;
    EXPECT_EQ(ImportPrescriptionFile(dropMessage(message)), "191212121212");
    const platform::XmlDocument patient =
        mirelo::testing::readStoredPatient(dataFile("191212121212.xml"));
    ASSERT_EQ(patient.documentElement().childNodes().size(), 1u);
    EXPECT_EQ(patient.documentElement().childNodes()[0].nodeName(), "PatientData");
}

TEST_F(MessageToPatientTest, an_empty_personal_number_writes_the_nameless_file_and_gives_nothing) {
    PrescriptionMessage message;
    message.pnr = "";
    message.items = {MessageItem{}};
    EXPECT_EQ(ImportPrescriptionFile(dropMessage(message)), "");
    const platform::XmlDocument patient = mirelo::testing::readStoredPatient(dataFile(".xml"));
    EXPECT_EQ(patient.selectSingleNode("//PatientData/Pnr").text(), "");
    EXPECT_EQ(patient.selectNodes("//Product").size(), 1u);
}

TEST_F(MessageToPatientTest, a_damaged_message_or_a_missing_element_writes_nothing) {
    PrescriptionMessage message;
    message.items = {MessageItem{}};
    std::string text = mirelo::testing::prescriptionMessageText(message);
    mirelo::testing::writeBytes(path("in/cut.xml"), text.substr(0, text.size() / 2));
    try {
        ImportPrescriptionFile(path("in/cut.xml"));
        FAIL() << "a truncated message was taken in";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040206));
        const std::string prefix = "Receptfil är skadad.\r\nAnledning: ";
        EXPECT_EQ(error.description().rfind(prefix, 0), 0u) << error.description();
        EXPECT_GT(error.description().size(), prefix.size());
    }

    PrescriptionMessage noPostalCode;
    noPostalCode.omitted = {"PostalCode"};
    try {
        ImportPrescriptionFile(dropMessage(noPostalCode));
        FAIL() << "a message without a postal code was taken in";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), 91);
    }
    EXPECT_TRUE(std::filesystem::is_empty(path("data")));
}

TEST_F(MessageToPatientTest, a_failing_second_item_leaves_the_patient_file_as_it_was) {
    PrescriptionMessage first;
    first.pnr = "77";
    first.items = {MessageItem{}};
    ImportPrescriptionFile(dropMessage(first, "first.xml"));
    const std::string before = mirelo::testing::readBytes(dataFile("77.xml"));

    PrescriptionMessage second;
    second.pnr = "77";
    second.familyName = "Annat";
    MessageItem good;
    good.itemId = "1";
    MessageItem withoutName;
    withoutName.itemId = "2";
    withoutName.omitted = {"Pnmn"};
    second.items = {good, withoutName};
    EXPECT_THROW(ImportPrescriptionFile(dropMessage(second, "second.xml")), MireloError);
    EXPECT_EQ(mirelo::testing::readBytes(dataFile("77.xml")), before);
}

} // namespace

TEST_F(MessageToPatientTest, a_message_of_ten_thousand_items_is_taken_in_whole) {
    // Each RegNr comes twice in the message, item i and item i + 5000; two of them are in the
    // file already, one with a note and a warning to hand on.
    constexpr int Items = 10000;
    constexpr int Half = Items / 2;
    mirelo::testing::ProductFields noted;
    noted.id = "OLD_0";
    noted.regNr = "R0";
    noted.note = "Tål ej laktos";
    noted.allergic = "1";
    noted.allergicHistory = "1";
    mirelo::testing::ProductFields other;
    other.id = "OLD_X";
    other.regNr = "X";
    mirelo::testing::ProductFields last;
    last.id = "OLD_LAST";
    last.regNr = "R" + std::to_string(Half - 1);
    mirelo::testing::storePatientFile(
        "55.xml", mirelo::testing::patientText("55", "Ek", "Eva", {noted, other, last}));

    PrescriptionMessage message;
    message.pnr = "55";
    for (int i = 0; i < Items; ++i) {
        MessageItem item;
        item.itemId = std::to_string(i);
        item.regNr = "R" + std::to_string(i % Half);
        message.items.push_back(item);
    }
    EXPECT_EQ(ImportPrescriptionFile(dropMessage(message)), "55");

    const platform::XmlDocument patient = mirelo::testing::readStoredPatient(dataFile("55.xml"));
    const auto ids = patient.selectNodes("/Patient/MedicalList/Product/ID");
    const auto checked = patient.selectNodes("/Patient/MedicalList/Product/Checked");
    ASSERT_EQ(ids.size(), Items + 3u);
    ASSERT_EQ(checked.size(), Items + 3u);
    // Newest first; each item's earlier twin, and the file's product of its RegNr, retired.
    for (int i = 0; i < Items; ++i) {
        const size_t at = Items - 1 - i;
        ASSERT_EQ(ids[at].text(), "S1_" + std::to_string(i));
        ASSERT_EQ(checked[at].text(), i < Half ? "0" : "1") << i;
    }
    const std::vector<std::pair<std::string, std::string>> older = {
        {"OLD_0", "0"}, {"OLD_X", "1"}, {"OLD_LAST", "0"}};
    for (size_t i = 0; i < older.size(); ++i) {
        EXPECT_EQ(ids[Items + i].text(), older[i].first);
        EXPECT_EQ(checked[Items + i].text(), older[i].second);
    }
    // The note and warning reach both items of that RegNr, the later one through the earlier.
    for (const size_t at : {size_t{Items - 1}, size_t{Half - 1}}) {
        const platform::XmlNode product = ids[at].selectSingleNode("..");
        EXPECT_EQ(product.selectSingleNode("ExtendedMedicalInfo").text(), "Tål ej laktos");
        EXPECT_EQ(product.selectSingleNode("Allergic").text(), "1");
        EXPECT_EQ(product.selectSingleNode("AllergicHistory").text(), "1");
    }
    EXPECT_EQ(ids[0].selectSingleNode("../ExtendedMedicalInfo").text(), "");
}

#include "core/mirelo_error.h"
#include "intake/inbox_scan.h"
#include "prescription_message_builder.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>

using namespace mirelo;
using mirelo::testing::childFields;
using mirelo::testing::Fields;
using mirelo::testing::MessageItem;
using mirelo::testing::PrescriptionMessage;
using mirelo::testing::ProcessEnded;

namespace {

using mirelo::testing::filesIn;

class InboxScanTest : public mirelo::testing::ApplicationTest {
  protected:
    void drop(const std::string &name, const PrescriptionMessage &message) {
        mirelo::testing::writePrescriptionMessage(path("in/" + name), message);
    }

    PrescriptionMessage messageFor(const std::string &pnr,
                                   std::vector<MessageItem> items = {MessageItem{}}) {
        PrescriptionMessage message;
        message.pnr = pnr;
        message.items = std::move(items);
        return message;
    }

    // Runs ticks as the main frame's timer would, with a medication view that is visible or
    // not and counts its refreshes; a box or the end of the process stops the run.
    void tick(int times) {
        for (int i = 0; i < times; ++i) {
            timer.Timer1_Timer(
                [this] {
                    ++visibilityQuestions;
                    return viewVisible;
                },
                [this] { ++refreshes; });
        }
    }

    // The one box of a failure that ends the process.
    void expectStopBox(const std::string &text) {
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, text);
        EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
        EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::OK);
        EXPECT_EQ(boxes[0].title, "Mirelo");
    }

    InboxTimer timer;
    bool viewVisible = true;
    int visibilityQuestions = 0;
    int refreshes = 0;
};

// What a stored product took from its message and its older namesake; the other fields are
// those of the record built from the item, which the record's own tests check one by one.
Fields takenIn(const platform::XmlNode &product) {
    Fields fields;
    for (const char *name : {"ID", "RegNr", "ProductName", "Checked", "ExtendedMedicalInfo",
                             "Allergic", "AllergicHistory", "InsertedBy"}) {
        fields.emplace_back(name, product.selectSingleNode(name).text());
    }
    EXPECT_EQ(product.childNodes().size(), 26u);
    return fields;
}

Fields fromMessage(const std::string &id, const std::string &regNr, const std::string &checked,
                   const std::string &note, const std::string &allergic,
                   const std::string &allergicHistory) {
    return {{"ID", id},
            {"RegNr", regNr},
            {"ProductName", "Alvedon"},
            {"Checked", checked},
            {"ExtendedMedicalInfo", note},
            {"Allergic", allergic},
            {"AllergicHistory", allergicHistory},
            {"InsertedBy", "Doktor Björk"}};
}

// The stored product of the known patient, as the test writes it and expects it back.
Fields knownProduct(const std::string &checked) {
    return {
        {"ID", "OLD_1"},
        {"Vnr", "998877"},
        {"RegNr", "500100"},
        {"ProductName", "Laktulos"},
        {"CompanyName", "Meda"},
        {"Form", "Oral lösning"},
        {"Str", "670 mg/ml"},
        {"ATCcode", "A06AD11"},
        {"SubstitutionType", ""},
        {"CareCoverageType", "HK"},
        {"NumberOfPackages", "1"},
        {"PackageSize", "500 ml"},
        {"UnstructuredDosageAdmin", "15 ml dagligen"},
        {"DispensingRepeatNumber", "1"},
        {"PrescribedBy", "Doktor Ek"},
        {"PrescribedTimestamp", "2025-11-01T08:00:00"},
        {"Checked", checked},
        {"ExtendedMedicalInfo", "Tål ej laktos"},
        {"ExtendedMedicalInfoBy", "Doktor Ek"},
        {"ExtendedMedicalInfoTimestamp", "2025-12-01 10:11:12"},
        {"InsertedBy", "Doktor Ek"},
        {"InsertedTimestamp", "2025-11-01T08:00:00"},
        {"TakenOutBy", ""},
        {"TakenOutTimestamp", ""},
        {"Allergic", "1"},
        {"AllergicHistory", "1"},
    };
}

// ISO-8859-1 text of a record, as a stored file holds it.
std::string storedText(const Fields &fields) {
    std::string text;
    for (const auto &[name, value] : fields) {
        text += "\t\t\t<" + name + ">" + QString::fromStdString(value).toLatin1().toStdString() +
                "</" + name + ">\r\n";
    }
    return text;
}

TEST_F(InboxScanTest, ten_ticks_take_in_a_folder_of_messages) {
    const std::string known =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Patient>\r\n\t<PatientData>\r\n" +
        storedText({{"FamilyName", "Lind"},
                    {"FirstGivenName", "Åke"},
                    {"Pnr", "194001011234"},
                    {"StreetName", "Kyrkogatan 2"},
                    {"PostalCode", "753 10"},
                    {"City", "Uppsala"},
                    {"GeneralInfo", "Pacemaker"},
                    {"GeneralInfoBy", "Doktor Ek"},
                    {"GeneralInfoTimestamp", "2025-10-01 12:00:00"}}) +
        "\t</PatientData>\r\n\t<MedicalList>\r\n\t\t<Product>\r\n" + storedText(knownProduct("1")) +
        "\t\t</Product>\r\n\t</MedicalList>\r\n</Patient>\r\n";
    mirelo::testing::writeBytes(path("data/194001011234.xml"),
                                mirelo::testing::scrambleBytes(known));

    PrescriptionMessage again = messageFor("194001011234", {MessageItem{}});
    again.setId = "A";
    again.familyName = "Lind";
    again.givenName = "Åke";
    again.items[0].regNr = "500100";
    drop("a_known.xml", again);

    MessageItem first;
    first.itemId = "1";
    first.regNr = "700200";
    MessageItem second = first;
    second.itemId = "2";
    PrescriptionMessage twoItems = messageFor("195502023456", {first, second});
    twoItems.setId = "B";
    drop("b_new.xml", twoItems);

    mirelo::testing::writeBytes(path("in/c_note.txt"), "inte ett recept");
    drop("d_anonymous.xml", messageFor(""));

    tick(10);

    EXPECT_TRUE(boxes.empty());
    EXPECT_FALSE(processEnded);
    EXPECT_EQ(visibilityQuestions, 1);
    EXPECT_EQ(refreshes, 1);
    EXPECT_EQ(filesIn(path("in")), std::set<std::string>{"c_note.txt"});
    EXPECT_EQ(filesIn(path("Error")), std::set<std::string>{"2026-03-15_140509_d_anonymous.xml"});
    EXPECT_EQ(filesIn(path("data")),
              (std::set<std::string>{"194001011234.xml", "195502023456.xml", ".xml"}));

    // The known patient: new name and address, the same general information, the new product
    // first with the note and warning of the one it replaces, which is retired.
    const platform::XmlDocument knownPatient =
        mirelo::testing::readStoredPatient(path("data/194001011234.xml"));
    const Fields knownData = {
        {"FamilyName", "Lind"},
        {"FirstGivenName", "Åke"},
        {"Pnr", "194001011234"},
        {"StreetName", "Ängsvägen 3"},
        {"PostalCode", "411 05"},
        {"City", "Göteborg"},
        {"GeneralInfo", "Pacemaker"},
        {"GeneralInfoBy", "Doktor Ek"},
        {"GeneralInfoTimestamp", "2025-10-01 12:00:00"},
    };
    EXPECT_EQ(childFields(knownPatient.selectSingleNode("/Patient/PatientData")), knownData);
    auto products = knownPatient.selectNodes("/Patient/MedicalList/Product");
    ASSERT_EQ(products.size(), 2u);
    EXPECT_EQ(takenIn(products[0]), fromMessage("A_1", "500100", "1", "Tål ej laktos", "1", "1"));
    EXPECT_EQ(childFields(products[1]), knownProduct("0"));
    EXPECT_EQ(knownPatient.documentElement().childNodes().size(), 2u);

    // The new patient: both items, the second current above the first.
    const platform::XmlDocument newPatient =
        mirelo::testing::readStoredPatient(path("data/195502023456.xml"));
    const Fields newData = {
        {"FamilyName", "Åström"},      {"FirstGivenName", "Märta"}, {"Pnr", "195502023456"},
        {"StreetName", "Ängsvägen 3"}, {"PostalCode", "411 05"},    {"City", "Göteborg"},
        {"GeneralInfo", ""},           {"GeneralInfoBy", ""},       {"GeneralInfoTimestamp", ""},
    };
    EXPECT_EQ(childFields(newPatient.selectSingleNode("/Patient/PatientData")), newData);
    products = newPatient.selectNodes("/Patient/MedicalList/Product");
    ASSERT_EQ(products.size(), 2u);
    EXPECT_EQ(takenIn(products[0]), fromMessage("B_2", "700200", "1", "", "0", "0"));
    EXPECT_EQ(takenIn(products[1]), fromMessage("B_1", "700200", "0", "", "0", "0"));

    // The nameless file of the rejected message.
    const platform::XmlDocument nameless = mirelo::testing::readStoredPatient(path("data/.xml"));
    EXPECT_EQ(nameless.selectSingleNode("//PatientData/Pnr").text(), "");
    EXPECT_EQ(nameless.selectNodes("//Product").size(), 1u);
}

TEST_F(InboxScanTest, every_tenth_tick_scans_asking_for_the_view_before_the_scan) {
    drop("m.xml", messageFor("1"));
    tick(9);
    EXPECT_EQ(timer.tickCount(), 9);
    EXPECT_EQ(visibilityQuestions, 0);
    EXPECT_TRUE(std::filesystem::exists(path("in/m.xml")));
    EXPECT_FALSE(std::filesystem::exists(path("Error")));

    bool messageWaitingWhenAsked = false;
    timer.Timer1_Timer(
        [&] {
            messageWaitingWhenAsked = std::filesystem::exists(path("in/m.xml"));
            return true;
        },
        [this] { ++refreshes; });
    EXPECT_TRUE(messageWaitingWhenAsked);
    EXPECT_EQ(timer.tickCount(), 0);
    EXPECT_EQ(refreshes, 1);
    EXPECT_TRUE(std::filesystem::exists(path("data/1.xml")));

    // A scan that handles nothing refreshes nothing, even with the view in sight.
    tick(10);
    EXPECT_EQ(visibilityQuestions, 1);
    EXPECT_EQ(refreshes, 1);

    // A hidden view isn't refreshed, though the message is taken in.
    viewVisible = false;
    drop("n.xml", messageFor("2"));
    tick(10);
    EXPECT_EQ(refreshes, 1);
    EXPECT_TRUE(std::filesystem::exists(path("data/2.xml")));
    EXPECT_TRUE(boxes.empty());
}

TEST_F(InboxScanTest, ReadFolder_takes_any_name_ending_in_xml_and_leaves_the_rest) {
    drop("a.XML", messageFor("1"));
    drop("bxml", messageFor("2"));
    drop("c.xml.tmp", messageFor("3"));
    drop("d.txt", messageFor("4"));
    std::filesystem::create_directory(path("in/sub.xml"));

    EXPECT_TRUE(ReadFolder());
    EXPECT_EQ(filesIn(path("in")), (std::set<std::string>{"c.xml.tmp", "d.txt", "sub.xml"}));
    EXPECT_EQ(filesIn(path("data")), (std::set<std::string>{"1.xml", "2.xml"}));
    EXPECT_TRUE(filesIn(path("Error")).empty());
}

TEST_F(InboxScanTest, ReadFolder_empty_personal_number_moves_message_to_Error) {
    drop("anon.xml", messageFor(""));
    EXPECT_FALSE(ReadFolder());
    EXPECT_EQ(filesIn(path("Error")), std::set<std::string>{"2026-03-15_140509_anon.xml"});
    EXPECT_TRUE(filesIn(path("in")).empty());

    // An empty inbox gives false, and the Error folder is there already.
    EXPECT_FALSE(ReadFolder());
}

TEST_F(InboxScanTest, a_personal_number_that_names_a_path_is_set_aside_and_writes_nothing) {
    const std::vector<std::string> numbers = {"../../escaped", "/tmp/escaped", "a/b", "..",
                                              "19\t12",        "19\\12"};
    for (size_t i = 0; i < numbers.size(); ++i) {
        drop("m" + std::to_string(i) + ".xml", messageFor(numbers[i]));
    }
    EXPECT_FALSE(ReadFolder());
    EXPECT_EQ(filesIn(path("Error")).size(), numbers.size());
    EXPECT_TRUE(filesIn(path("in")).empty());
    EXPECT_TRUE(filesIn(path("data")).empty());
    EXPECT_FALSE(std::filesystem::exists(appDir() + "/../escaped.xml"));
    EXPECT_FALSE(std::filesystem::exists("/tmp/escaped.xml"));
    EXPECT_TRUE(boxes.empty());
}

TEST_F(InboxScanTest, without_an_inbox_the_scan_shows_why_and_ends_the_process) {
    std::filesystem::remove(path("in"));
    EXPECT_THROW(tick(10), ProcessEnded);
    EXPECT_TRUE(processEnded);
    expectStopBox("Det finns ingen katalog för inkommande recept.");
    EXPECT_EQ(refreshes, 0);
}

TEST_F(InboxScanTest, a_truncated_message_ends_the_process_with_both_messages_left) {
    const std::string text = mirelo::testing::prescriptionMessageText(messageFor("1"));
    mirelo::testing::writeBytes(path("in/a_cut.xml"), text.substr(0, text.size() - 40));
    drop("b_whole.xml", messageFor("2"));

    EXPECT_THROW(tick(10), ProcessEnded);
    ASSERT_EQ(boxes.size(), 1u);
    const std::string prefix = "Receptfil är skadad.\r\nAnledning: ";
    EXPECT_EQ(boxes[0].text.rfind(prefix, 0), 0u) << boxes[0].text;
    EXPECT_GT(boxes[0].text.size(), prefix.size());
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(filesIn(path("in")), (std::set<std::string>{"a_cut.xml", "b_whole.xml"}));
    EXPECT_TRUE(filesIn(path("data")).empty());
    EXPECT_TRUE(filesIn(path("Error")).empty());
}

TEST_F(InboxScanTest, a_message_whose_second_item_lacks_its_name_changes_no_file) {
    drop("first.xml", messageFor("77"));
    tick(10);
    const std::string before = mirelo::testing::readBytes(path("data/77.xml"));

    MessageItem good;
    good.itemId = "5";
    MessageItem nameless;
    nameless.itemId = "6";
    nameless.omitted = {"Pnmn"};
    PrescriptionMessage broken = messageFor("77", {good, nameless});
    broken.familyName = "Ny";
    drop("second.xml", broken);

    EXPECT_THROW(tick(10), ProcessEnded);
    expectStopBox(runtime::description(runtime::ObjectNotSet));
    EXPECT_EQ(mirelo::testing::readBytes(path("data/77.xml")), before);
    EXPECT_EQ(filesIn(path("in")), std::set<std::string>{"second.xml"});
}

TEST_F(InboxScanTest, only_failures_of_the_product_number_exchange_let_the_process_go_on) {
    const auto refreshFailing = [this](MireloError failure) {
        drop("m.xml", messageFor("1"));
        for (int i = 0; i < 10; ++i) {
            timer.Timer1_Timer([] { return true; }, [&] { throw failure; });
        }
    };
    refreshFailing(MireloError(errors::VnrResponseDamaged, "Kontroll av varunummer felaktig."));
    expectStopBox("Kontroll av varunummer felaktig. ");
    boxes.clear();
    refreshFailing(MireloError(errors::ServerUnreachable, "anslutning"));
    expectStopBox(
        "Kunde inte ansluta till Mirelos loginserver. Kontrollera din internetförbindelse.");
    EXPECT_FALSE(processEnded);

    // The patient file gone from under the view is like any other failure.
    boxes.clear();
    EXPECT_THROW(
        refreshFailing(MireloError(errors::PatientFileMissing, "Patientfilen finns inte.")),
        ProcessEnded);
    expectStopBox("Patientfilen finns inte.");
}

TEST_F(InboxScanTest, a_message_that_cannot_be_moved_or_deleted_ends_the_process) {
    // A rejected message of the same name in the same second is already in Error/.
    std::filesystem::create_directory(path("Error"));
    mirelo::testing::writeBytes(path("Error/2026-03-15_140509_anon.xml"), "tidigare");
    drop("anon.xml", messageFor(""));
    EXPECT_THROW(ReadFolder(), MireloError);
    EXPECT_TRUE(std::filesystem::exists(path("in/anon.xml")));
    std::filesystem::remove(path("in/anon.xml"));

    // A read-only message is taken in, but stays, and comes up again at the next scan.
    drop("locked.xml", messageFor("5"));
    ::chmod(path("in/locked.xml").c_str(), 0444);
    EXPECT_THROW(tick(10), ProcessEnded);
    EXPECT_EQ(boxes.back().text, runtime::description(runtime::PermissionDenied));
    EXPECT_TRUE(std::filesystem::exists(path("in/locked.xml")));
    EXPECT_TRUE(std::filesystem::exists(path("data/5.xml")));
}

} // namespace

TEST_F(InboxScanTest, a_message_whose_entities_multiply_its_text_is_refused_as_damaged) {
    drop("first.xml", messageFor("88"));
    tick(10);
    const std::string before = mirelo::testing::readBytes(path("data/88.xml"));

    // 77 KiB that would read as 256 MB: one 64 KiB entity used 4 000 times as a product name.
    std::string text = mirelo::testing::prescriptionMessageText(messageFor("88"));
    std::string uses;
    for (int i = 0; i < 4000; ++i) {
        uses += "&big;";
    }
    text.replace(text.find("Alvedon"), 7, uses);
    text.insert(text.find("?>") + 2, "<!DOCTYPE NewPrescriptionMessage [<!ENTITY big \"" +
                                         std::string(64 * 1024, 'x') + "\">]>");
    mirelo::testing::writeBytes(path("in/big.xml"), text);
    const auto inboxBefore = filesIn(path("in"));

    EXPECT_THROW(tick(10), ProcessEnded);
    expectStopBox("Receptfil är skadad.\r\nAnledning: Entiteterna ger mer text än tillåtet: högst "
                  "tio gånger dokumentets storlek och aldrig mer än 16 MiB.");
    EXPECT_EQ(mirelo::testing::readBytes(path("in/big.xml")), text);
    EXPECT_EQ(filesIn(path("in")), inboxBefore);
    EXPECT_EQ(filesIn(path("data")), std::set<std::string>{"88.xml"});
    EXPECT_EQ(mirelo::testing::readBytes(path("data/88.xml")), before);
    EXPECT_TRUE(filesIn(path("Error")).empty());
}

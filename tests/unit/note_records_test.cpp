#include "core/application_context.h"
#include "core/clock.h"
#include "core/mirelo_error.h"
#include "intake/message_to_patient.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "records/note_records.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>

using namespace mirelo;
namespace support = mirelo::testing;
using support::Fields;
using support::ProductFields;

namespace {

const std::string Pnr = "191212121212";
const std::string Sig = "Doktor Signe Åberg";

ProductFields product(const std::string &id, const std::string &regNr) {
    ProductFields fields;
    fields.id = id;
    fields.regNr = regNr;
    return fields;
}

// The elements of a product that notes and warnings write, in file order.
Fields noteOf(const std::string &note, const std::string &by, const std::string &at,
              const std::string &allergic, const std::string &history) {
    return {{"ExtendedMedicalInfo", note},
            {"ExtendedMedicalInfoBy", by},
            {"ExtendedMedicalInfoTimestamp", at},
            {"Allergic", allergic},
            {"AllergicHistory", history}};
}

Fields recordOf(const std::string &status, const std::string &reason, const std::string &at) {
    return {{"RegNr", "100001"},
            {"AllergicStatusHistory", status},
            {"AllergicInfoHistory", reason},
            {"AllergicInfoByHistory", Sig},
            {"AllergicInfoTimestampHistory", at}};
}

class NoteRecordsTest : public support::ApplicationTest {
  protected:
    std::string filePath() const { return session().gDataPath + Pnr + ".xml"; }

    void store(const std::vector<ProductFields> &products) {
        support::storePatientFile(Pnr + ".xml",
                                  support::patientText(Pnr, "Tolvansson", "Tolvan", products));
    }

    // The note elements of every product by ID, and the history records newest first.
    std::map<std::string, Fields> storedNotes() const {
        std::map<std::string, Fields> notes;
        const platform::XmlDocument patient = support::readStoredPatient(filePath());
        for (const platform::XmlNode &item : patient.selectNodes("//Product")) {
            Fields fields = support::childFields(item);
            std::erase_if(fields, [](const auto &field) {
                return field.first.find("ExtendedMedicalInfo") != 0 &&
                       field.first.find("Allergic") != 0;
            });
            notes[item.selectSingleNode("ID").text()] = fields;
        }
        return notes;
    }

    std::vector<Fields> storedRecords() const {
        const platform::XmlDocument patient = support::readStoredPatient(filePath());
        std::vector<Fields> records;
        const platform::XmlNode history = patient.selectSingleNode("//History");
        if (history) {
            EXPECT_EQ(patient.documentElement().childNodes().back(), history);
            for (const platform::XmlNode &record : history.childNodes()) {
                records.push_back(support::childFields(record));
            }
        }
        return records;
    }

    // What the screen was shown while an operation ran.
    std::vector<std::string> marks;
    std::function<void(const std::string &)> mark(const std::string &what) {
        return [this, what](const std::string &value) { marks.push_back(what + value); };
    }
    GeneralInfoMarks generalInfoMarks() { return {mark("Text1.Tag="), mark("Label3=")}; }
};

// A note and a warning belong to the product: both prescriptions of 100001 always agree, the
// other product is never touched, records only ever go on top, and a later prescription of the
// same product inherits the history mark.
TEST_F(NoteRecordsTest, the_life_of_a_warning_from_the_first_tick_to_a_new_prescription) {
    ProductFields older = product("1_1", "100001");
    older.checked = "0";
    store({product("2_1", "100001"), older, product("3_1", "200002")});
    const Fields untouched = noteOf("", "", "", "0", "0");
    auto at = [](int minute) { return "2026-03-15 15:0" + std::to_string(minute) + ":00"; };
    const std::string note = "Tas med \"mat\" & vatten";

    struct Step {
        const char *name;
        std::function<void()> act;
        Fields note;
        std::vector<Fields> records;
    };
    const std::vector<Step> steps = {
        {"tick with a reason",
         [] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag", Sig, NoteScreen::MedicalNote); },
         noteOf("", "", "", "1", "1"),
         {recordOf("1", "Utslag", at(1))}},
        {"save a note, the box ticked",
         [&] { SaveMedicalNote(Pnr, "1_1", note, 1, Sig); },
         noteOf(note, Sig, at(2), "1", "1"),
         {recordOf("1", "Utslag", at(1))}},
        {"untick",
         [] { SaveAllergicHistory(Pnr, "1_1", 0, "Tålde den", Sig, NoteScreen::ExtendedInfo); },
         noteOf(note, Sig, at(2), "0", "1"),
         {recordOf("0", "Tålde den", at(3)), recordOf("1", "Utslag", at(1))}},
        {"tick again",
         [] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag igen", Sig, NoteScreen::MedicalNote); },
         noteOf(note, Sig, at(2), "1", "1"),
         {recordOf("1", "Utslag igen", at(4)), recordOf("0", "Tålde den", at(3)),
          recordOf("1", "Utslag", at(1))}},
        {"delete the note of a ticked box: a record, then the deletion",
         [] {
             SaveAllergicHistory(Pnr, "2_1", 0, "Borttagen", Sig, NoteScreen::MedicalNote);
             deleteNote(Pnr, "2_1", Sig, NoteScreen::MedicalNote);
         },
         noteOf("", Sig, at(5), "0", "1"),
         {recordOf("0", "Borttagen", at(5)), recordOf("1", "Utslag igen", at(4)),
          recordOf("0", "Tålde den", at(3)), recordOf("1", "Utslag", at(1))}},
    };
    for (size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE(steps[i].name);
        freezeClockForTesting(QDateTime(frozenNow().date(), QTime(15, int(i) + 1, 0)));
        steps[i].act();
        const std::map<std::string, Fields> expected = {
            {"2_1", steps[i].note}, {"1_1", steps[i].note}, {"3_1", untouched}};
        EXPECT_EQ(storedNotes(), expected);
        EXPECT_EQ(storedRecords(), steps[i].records);
    }

    const std::vector<Fields> records = storedRecords();
    support::PrescriptionMessage message;
    message.setId = "S9";
    message.items.push_back(support::MessageItem{});
    support::writePrescriptionMessage(path("in/S9.xml"), message);
    ImportPrescriptionFile(path("in/S9.xml"));
    const std::map<std::string, Fields> expected = {{"S9_1", noteOf("", "", "", "0", "1")},
                                                    {"2_1", steps.back().note},
                                                    {"1_1", steps.back().note},
                                                    {"3_1", untouched}};
    EXPECT_EQ(storedNotes(), expected);
    EXPECT_EQ(storedRecords(), records);
}

TEST_F(NoteRecordsTest, SaveGeneralInfo_signs_the_general_note_and_marks_the_screen) {
    store({});
    SaveGeneralInfo(Pnr, "Pollenallergi", Sig, generalInfoMarks());
    const Fields patientData = support::childFields(
        support::readStoredPatient(filePath()).selectSingleNode("//PatientData"));
    const Fields expected = {{"GeneralInfo", "Pollenallergi"},
                             {"GeneralInfoBy", Sig},
                             {"GeneralInfoTimestamp", "2026-03-15 14:05:09"}};
    EXPECT_EQ(Fields(patientData.end() - 3, patientData.end()), expected);
    EXPECT_EQ(marks, (std::vector<std::string>{"Text1.Tag=NoChange", "Text1.Tag=",
                                               "Label3=" + Sig + " - 2026-03-15 14:05:09"}));
}

// Which products a deletion or a save reaches, by the RegNr that the picked product 1_1 shares
// with 2_1; 3_1 is another product.
TEST_F(NoteRecordsTest, deletions_and_saves_spread_by_the_test_of_their_screen) {
    const Fields old = noteOf("Gammal", "Doktor Ek", "2026-01-11 08:00:00", "1", "1");
    const Fields cleared = noteOf("", Sig, "2026-03-15 14:05:09", "0", "1");
    struct Case {
        std::string regNr;
        std::function<void()> act;
        std::vector<std::string> cleared;
    };
    auto deletion = [](NoteScreen screen) { return [=] { deleteNote(Pnr, "1_1", Sig, screen); }; };
    const std::vector<Case> cases = {
        {"0", deletion(NoteScreen::MedicalNote), {"1_1", "2_1"}},
        {"0", deletion(NoteScreen::ExtendedInfo), {"1_1"}},
        {"7", deletion(NoteScreen::ExtendedInfo), {"1_1", "2_1"}},
        {"A1", deletion(NoteScreen::MedicalNote), {"1_1", "2_1"}},
        {"", deletion(NoteScreen::MedicalNote), {"1_1"}},
        // The note dialog records a warning without a RegNr, and spreads it nowhere.
        {"",
         [this] {
             SaveAllergicHistory(Pnr, "1_1", 0, "Utslag", Sig, NoteScreen::MedicalNote);
             ASSERT_EQ(storedRecords().size(), 1u);
             EXPECT_EQ(storedRecords()[0][0], (std::pair<std::string, std::string>("RegNr", "")));
         },
         {}},
        // A product without a RegNr takes no note at all, and nothing is said.
        {"", [] { SaveMedicalNote(Pnr, "1_1", "Ny", 0, Sig); }, {}},
        {"", [this] { SaveProductNote(Pnr, "1_1", "Ny", Sig, mark("txtNoteChanged=")); }, {}},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE("RegNr \"" + test.regNr + "\"");
        std::vector<ProductFields> products = {
            product("1_1", test.regNr), product("2_1", test.regNr), product("3_1", "100001")};
        for (ProductFields &fields : products) {
            fields.note = "Gammal";
            fields.noteBy = "Doktor Ek";
            fields.noteTimestamp = "2026-01-11 08:00:00";
            fields.allergic = fields.allergicHistory = "1";
        }
        store(products);
        test.act();
        std::map<std::string, Fields> expected = {{"1_1", old}, {"2_1", old}, {"3_1", old}};
        for (const std::string &id : test.cleared) {
            expected[id] = cleared;
        }
        EXPECT_EQ(storedNotes(), expected);
        EXPECT_TRUE(boxes.empty());
    }
    EXPECT_EQ(marks, std::vector<std::string>{"txtNoteChanged=" + Sig + " - 2026-03-15 14:05:09"});
}

// Every failure leaves the file as it was, byte for byte, shows the box of the screen that
// called, and the process goes on. Marks the screen got before the write stay.
TEST_F(NoteRecordsTest, a_failed_operation_leaves_the_file_and_shows_its_box) {
    const std::string plain =
        support::patientText(Pnr, "Tolvansson", "Tolvan",
                             {product("1_1", "100001"), product("2_1", ""), product("3_1", "A1")});
    const std::string damaged = "<Patient><MedicalList>";
    std::string withoutSigner = plain;
    withoutSigner.erase(withoutSigner.find("<GeneralInfoBy></GeneralInfoBy>"), 31);
    platform::XmlDocument parsed;
    parsed.loadXML(damaged);
    const std::string now = Sig + " - 2026-03-15 14:05:09";
    const std::string notStored = "5 Ogiltigt argument eller anrop av procedur";
    const std::string objectNotSet = "Objektvariabeln eller blockvariabeln With har inte angetts";
    const auto note = ReportNoteFailure;
    const auto reason = ReportReasonDialogFailure;
    using Icon = platform::MsgBoxIcon;

    struct Case {
        const char *name;
        std::string fileText; // no file when empty
        std::function<void()> act;
        void (*report)(const MireloError &);
        std::string box;
        Icon icon;
        std::vector<std::string> marks = {};
    };
    const std::vector<Case> cases = {
        {"a note holding û", plain, [] { SaveMedicalNote(Pnr, "1_1", "Tål ej û", 1, Sig); }, note,
         notStored, Icon::None},
        {"a product note holding ý",
         plain,
         [this] { SaveProductNote(Pnr, "1_1", "ý", Sig, mark("txtNoteChanged=")); },
         note,
         notStored,
         Icon::None,
         {"txtNoteChanged=" + now}},
        {"a general note holding þ",
         plain,
         [this] { SaveGeneralInfo(Pnr, "þ", Sig, generalInfoMarks()); },
         note,
         notStored,
         Icon::None,
         {"Text1.Tag=NoChange", "Text1.Tag=", "Label3=" + now}},
        {"a reason holding ÿ", plain,
         [] { SaveAllergicHistory(Pnr, "1_1", 1, "ÿ", Sig, NoteScreen::MedicalNote); }, reason,
         "Fel uppstod: Ogiltigt argument eller anrop av procedur", Icon::Stop},
        {"a file that no longer parses", damaged,
         [] { deleteNote(Pnr, "1_1", Sig, NoteScreen::ExtendedInfo); }, note,
         "-2147220988 Patientfil är skadad.\r\nAnledning: " + parsed.parseError().reason,
         Icon::None},
        {"a file deleted under the dialog", "", [] { SaveMedicalNote(Pnr, "1_1", "", 0, Sig); },
         note, "53 Filen hittades inte", Icon::None},
        {"a RegNr that isn't a number, deleted from the extended information", plain,
         [] { deleteNote(Pnr, "3_1", Sig, NoteScreen::ExtendedInfo); }, note,
         "13 Typerna matchar inte", Icon::None},
        {"an empty RegNr on the extended information's history", plain,
         [] { SaveAllergicHistory(Pnr, "2_1", 1, "Utslag", Sig, NoteScreen::ExtendedInfo); },
         reason, "Fel uppstod: " + objectNotSet, Icon::Stop},
        {"a general note on a file without its signer", withoutSigner,
         [this] { SaveGeneralInfo(Pnr, "Ny", Sig, generalInfoMarks()); }, note,
         "91 " + objectNotSet, Icon::None},
        {"an ID with a double quote", plain, [] { SaveMedicalNote(Pnr, "1\"1", "", 0, Sig); }, note,
         "-2147467259 Ogiltig fråga: //Product[ID = \"1\"1\"]", Icon::None},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(test.name);
        std::filesystem::remove(filePath());
        if (!test.fileText.empty()) {
            support::storePatientFile(Pnr + ".xml", test.fileText);
        }
        const std::string before = support::readBytes(filePath());
        boxes.clear();
        marks.clear();
        try {
            test.act();
            ADD_FAILURE() << "no failure";
        } catch (const MireloError &error) {
            test.report(error);
        }
        EXPECT_EQ(std::filesystem::exists(filePath()), !test.fileText.empty());
        EXPECT_TRUE(support::readBytes(filePath()) == before) << "the file changed";
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text, test.box);
        EXPECT_EQ(boxes[0].icon, test.icon);
        EXPECT_EQ(boxes[0].title, "Mirelo");
        EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::OK);
        EXPECT_EQ(marks, test.marks);
        EXPECT_FALSE(processEnded);
    }
}

} // namespace

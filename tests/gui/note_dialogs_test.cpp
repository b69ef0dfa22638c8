#include "core/application_context.h"
#include "patient_file_builder.h"
#include "platform/gui/flex_grid.h"
#include "screen_test.h"
#include "screens/control_tag.h"
#include "stored_patient_reading.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;
using support::Fields;
using support::ProductFields;

namespace {

const std::string Pnr = "191212121212";
const std::string Signature = "Dr. Karin Lindqvist";
const std::string Now = "2026-03-15 14:05:09";
const std::string Question = "Är du säker på att du vill ta bort notering?";

class NoteDialogsTest : public support::ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        session().gSignature = Signature;
    }

    // Two prescriptions of one product and one of another, stored with the History given.
    void storePatient(const std::string &allergic, const std::string &note,
                      const std::string &history = "") {
        ProductFields newest;
        newest.id = "2_1";
        newest.allergic = allergic;
        newest.note = note;
        ProductFields older = newest;
        older.id = "1_1";
        older.checked = "0";
        ProductFields other;
        other.id = "3_1";
        other.regNr = "200002";
        other.productName = "Waran";
        std::string text = support::patientText(Pnr, "Åström", "Märta", {newest, older, other});
        text.insert(text.rfind("</Patient>"), history);
        support::storePatientFile(Pnr + ".xml", text);
    }

    std::string fileBytes() const { return support::readBytes(path("data/" + Pnr + ".xml")); }

    // The note, the warning and the flag of history of a stored product.
    Fields noteOf(const std::string &id) const {
        const auto stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
        const auto product = stored.selectSingleNode("//Product[ID = \"" + id + "\"]");
        Fields fields;
        for (const char *name : {"ExtendedMedicalInfo", "ExtendedMedicalInfoBy",
                                 "ExtendedMedicalInfoTimestamp", "Allergic", "AllergicHistory"}) {
            fields.emplace_back(name, product.selectSingleNode(name).text());
        }
        return fields;
    }

    std::vector<Fields> historyRecords() const {
        const auto stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
        std::vector<Fields> records;
        for (const auto &record : stored.selectNodes("/Patient/History/AllergicHistory")) {
            records.push_back(support::childFields(record));
        }
        return records;
    }

    static Fields record(const std::string &status, const std::string &reason) {
        return {{"RegNr", "100001"},
                {"AllergicStatusHistory", status},
                {"AllergicInfoHistory", reason},
                {"AllergicInfoByHistory", Signature},
                {"AllergicInfoTimestampHistory", Now}};
    }

    // Typed text; the key simulation knows no letters beyond ASCII.
    static void type(QPlainTextEdit *box, const char *text) {
        box->insertPlainText(QString::fromUtf8(text));
    }

    // The reason dialog is modal: what the user does in it is queued before it opens.
    void inReasonDialog(const std::function<void(frmAllergicExtendedInfo &)> &act) {
        QTimer::singleShot(0, [this, act] {
            ASSERT_TRUE(IsLoaded<frmAllergicExtendedInfo>());
            reasonOpened = true;
            act(Screen<frmAllergicExtendedInfo>());
        });
    }
    static void answer(frmAllergicExtendedInfo &dialog, const char *reason, QPushButton *button) {
        type(dialog.txtExtendedMedicalInfo, reason);
        button->click();
    }

    frmMedicalNote &openNote() {
        frmMedicalNote &note = Screen<frmMedicalNote>();
        note.ReadPatientFile("2_1", Pnr);
        return note;
    }

    bool reasonOpened = false;
};

TEST_F(NoteDialogsTest,
       the_note_dialog_opens_quietly_on_a_warning_and_OK_signs_every_prescription) {
    storePatient("1", "Rad ett\nRad två");
    frmMedicalNote &note = openNote();
    EXPECT_EQ(note.Frame1->title(),
              "Notering om: Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek");
    EXPECT_EQ(note.txtExtendedMedicalInfo->toPlainText(), "Rad ett\nRad två");
    EXPECT_TRUE(note.chkAllergic->isChecked());
    EXPECT_FALSE(IsLoaded<frmAllergicExtendedInfo>()) << "filling the box asks for no reason";
    note.show();
    QTest::keyClick(&note, Qt::Key_Escape);
    EXPECT_TRUE(note.isVisible()) << "no way out without saving";

    // Emptying the box and pressing OK is a save of an empty note, not a deletion.
    note.txtExtendedMedicalInfo->clear();
    type(note.txtExtendedMedicalInfo, "Utsatt \"tills vidare\" & följs upp");
    QTest::keyClick(note.txtExtendedMedicalInfo, Qt::Key_Return);
    type(note.txtExtendedMedicalInfo, "Rad två");
    note.cmdSave->click();
    const Fields saved{{"ExtendedMedicalInfo", "Utsatt \"tills vidare\" & följs upp\nRad två"},
                       {"ExtendedMedicalInfoBy", Signature},
                       {"ExtendedMedicalInfoTimestamp", Now},
                       {"Allergic", "1"},
                       {"AllergicHistory", "0"}};
    EXPECT_EQ(noteOf("2_1"), saved);
    EXPECT_EQ(noteOf("1_1"), saved);
    EXPECT_EQ(noteOf("3_1")[1].second, "") << "another product keeps its note unsigned";
    EXPECT_FALSE(IsLoaded<frmMedicalNote>());
    EXPECT_EQ(Screen<frmShowPatient>().FlexGrid->TextMatrix(1, 7), "2_1")
        << "the medication view is filled again before the dialog goes";
    EXPECT_TRUE(historyRecords().empty());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(NoteDialogsTest, a_click_on_the_box_saves_with_a_reason_or_is_put_back_by_Avbryt) {
    storePatient("0", "Huvudvärk");
    frmMedicalNote &note = openNote();

    inReasonDialog([](frmAllergicExtendedInfo &dialog) {
        EXPECT_TRUE(dialog.txtExtendedMedicalInfo->toPlainText().isEmpty());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_TRUE(dialog.isVisible()) << "only Avbryt cancels";
        answer(dialog, "Utslag", dialog.cmdSave);
    });
    note.chkAllergic->click();
    ASSERT_TRUE(reasonOpened);
    EXPECT_EQ(historyRecords(), std::vector<Fields>{record("1", "Utslag")});
    for (const char *id : {"2_1", "1_1"}) {
        EXPECT_EQ(noteOf(id), (Fields{{"ExtendedMedicalInfo", "Huvudvärk"},
                                      {"ExtendedMedicalInfoBy", ""},
                                      {"ExtendedMedicalInfoTimestamp", ""},
                                      {"Allergic", "1"},
                                      {"AllergicHistory", "1"}}));
    }
    EXPECT_TRUE(IsLoaded<frmMedicalNote>()) << "a change of status alone leaves the note open";
    EXPECT_TRUE(note.chkAllergic->isChecked());

    // Unticking and Avbryt: the box comes back ticked without the dialog opening again.
    const std::string before = fileBytes();
    for (const bool tickedBefore : {true, false}) {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        reasonOpened = false;
        setTag(note.chkAllergic, "NoClick");
        note.chkAllergic->setChecked(tickedBefore);
        setTag(note.chkAllergic, "");
        int opened = 0;
        inReasonDialog([&opened](frmAllergicExtendedInfo &dialog) {
            ++opened;
            answer(dialog, "Fel", dialog.cmdCancel);
        });
        note.chkAllergic->click();
        QApplication::processEvents();
        EXPECT_EQ(opened, 1);
        EXPECT_EQ(note.chkAllergic->isChecked(), tickedBefore);
    }
    EXPECT_EQ(fileBytes(), before);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(NoteDialogsTest, deleting_asks_first_and_a_warning_is_only_taken_away_with_a_reason) {
    const Fields deleted{{"ExtendedMedicalInfo", ""},
                         {"ExtendedMedicalInfoBy", Signature},
                         {"ExtendedMedicalInfoTimestamp", Now},
                         {"Allergic", "0"},
                         {"AllergicHistory", "0"}};
    struct Case {
        std::string allergic;
        platform::MsgBoxResult answer;
        // Which button of the reason dialog, if it opens.
        QPushButton *frmAllergicExtendedInfo::*button;
        bool deletes;
    };
    for (const Case &c :
         {Case{"0", platform::MsgBoxResult::No, nullptr, false},
          Case{"0", platform::MsgBoxResult::Yes, nullptr, true},
          Case{"1", platform::MsgBoxResult::Yes, &frmAllergicExtendedInfo::cmdCancel, false},
          Case{"1", platform::MsgBoxResult::Yes, &frmAllergicExtendedInfo::cmdSave, true}}) {
        SCOPED_TRACE(c.allergic + (c.deletes ? " deletes" : " keeps"));
        storePatient(c.allergic, "Gammal notering");
        const std::string before = fileBytes();
        boxes.clear();
        nextAnswers = {c.answer};
        reasonOpened = false;
        frmMedicalNote &note = openNote();
        if (c.button) {
            inReasonDialog([&c](frmAllergicExtendedInfo &dialog) {
                answer(dialog, "Ingen reaktion vid provokation", dialog.*c.button);
            });
        }
        note.cmdDelete->click();
        QApplication::processEvents();

        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text,
                  c.allergic == "1"
                      ? "Denna notering innehåller varning om läkemedelsöverkänslighet.\r\n" +
                            Question
                      : Question);
        EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::YesNo);
        EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Warning);
        EXPECT_EQ(reasonOpened, c.button != nullptr);
        EXPECT_EQ(IsLoaded<frmMedicalNote>(), !c.deletes);
        EXPECT_FALSE(IsLoaded<frmAllergicExtendedInfo>());
        if (!c.deletes) {
            EXPECT_EQ(fileBytes(), before);
            EXPECT_EQ(note.chkAllergic->isChecked(), c.allergic == "1");
            EXPECT_EQ(note.txtExtendedMedicalInfo->toPlainText(), "Gammal notering");
            continue;
        }
        const bool withRecord = c.allergic == "1";
        Fields expected = deleted;
        expected[4].second = withRecord ? "1" : "0";
        EXPECT_EQ(noteOf("2_1"), expected);
        EXPECT_EQ(noteOf("1_1"), expected);
        EXPECT_EQ(historyRecords(),
                  withRecord ? std::vector<Fields>{record("0", "Ingen reaktion vid provokation")}
                             : std::vector<Fields>{});
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(NoteDialogsTest, a_write_that_fails_keeps_the_file_and_the_dialog_open) {
    storePatient("0", "");
    const std::string before = fileBytes();
    frmMedicalNote &note = openNote();
    type(note.txtExtendedMedicalInfo, "Dosering enligt schemat på sidan två û");
    note.cmdSave->click();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "5 Ogiltigt argument eller anrop av procedur");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::None);
    EXPECT_EQ(boxes[0].title, "Mirelo");
    EXPECT_TRUE(IsLoaded<frmMedicalNote>());

    // The reason dialog stays with its reason, for another try.
    bool stayedOpen = false;
    inReasonDialog([&stayedOpen](frmAllergicExtendedInfo &dialog) {
        type(dialog.txtExtendedMedicalInfo, "Klåda û");
        dialog.cmdSave->click();
        stayedOpen = IsLoaded<frmAllergicExtendedInfo>() && dialog.isVisible();
        dialog.cmdCancel->click();
    });
    note.chkAllergic->click();
    EXPECT_TRUE(stayedOpen);
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[1].text, "Fel uppstod: Ogiltigt argument eller anrop av procedur");
    EXPECT_EQ(boxes[1].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(boxes[1].title, "Mirelo");
    EXPECT_FALSE(note.chkAllergic->isChecked());
    EXPECT_EQ(fileBytes(), before);
}

// A History element holding the records given as status, time, author and reason.
std::string historyOf(const std::vector<std::array<std::string, 4>> &records,
                      const std::string &regNr = "100001") {
    std::string history = "<History>";
    for (const auto &[status, time, by, reason] : records) {
        history += "<AllergicHistory><RegNr>" + regNr + "</RegNr><AllergicStatusHistory>" + status +
                   "</AllergicStatusHistory><AllergicInfoHistory>" + reason +
                   "</AllergicInfoHistory><AllergicInfoByHistory>" + by +
                   "</AllergicInfoByHistory><AllergicInfoTimestampHistory>" + time +
                   "</AllergicInfoTimestampHistory></AllergicHistory>";
    }
    return history + "</History>";
}

TEST_F(NoteDialogsTest, the_history_lists_the_products_records_newest_first_a_row_a_record) {
    const std::string reason58(58, 'a');
    // 58 characters stored, 59 as shown: a line feed shows as two blanks.
    const std::string reason59 = std::string(28, 'b') + "\n" + std::string(29, 'b');
    storePatient("1", "",
                 historyOf({{"1", "2026-03-15 14:05:09", "Dr. Ek", reason58},
                            {"0", "15/3/26 2:05 PM", "Dr. Al", reason59},
                            {"1", "2026-01-02 08:00:00", "Dr. Ek", std::string(116, 'c')}}));
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    platform::FlexGrid *grid = history.FlexGrid;
    const int plainHeight = grid->RowHeight(1);
    history.listHistory(Pnr, "100001", "Alvedon Tablett 500 mg Orion");

    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(history.Frame1->title(), "Historik för överkänslighet: Alvedon Tablett 500 mg Orion");
    const std::vector<std::vector<QString>> shown{
        {"", "Ö.käns", "Datum", "Förskrivare", "Beskrivning"},
        {"", "Ja", "2026-03-15", "Dr. Ek", QString::fromStdString(reason58)},
        {"", "Nej", "15/3/26 2:", "Dr. Al", QString(28, 'b') + "  " + QString(29, 'b')},
        {"", "Ja", "2026-01-02", "Dr. Ek", QString(116, 'c')}};
    ASSERT_EQ(grid->Rows(), 4);
    for (int row = 0; row < 4; ++row) {
        for (int col = 0; col < 5; ++col) {
            EXPECT_EQ(grid->TextMatrix(row, col), shown[row][col]) << row << "," << col;
        }
    }
    EXPECT_EQ(grid->RowHeight(1), plainHeight);
    EXPECT_EQ(grid->RowHeight(2), 2 * plainHeight) << "59 characters as shown";
    EXPECT_EQ(grid->RowHeight(3), 3 * plainHeight);
    EXPECT_EQ(grid->ColWidth(0), 0);
    EXPECT_EQ(grid->ColWidth(4), 3700);
    EXPECT_EQ(grid->CellAlignmentAt(1, 1), platform::FlexGrid::AlignCenterCenter);
    EXPECT_EQ(grid->CellAlignmentAt(1, 4), platform::FlexGrid::AlignLeftCenter);
    EXPECT_TRUE(grid->CellFontBoldAt(0, 4));
    history.cmdBack_Click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // Another product has no records: the heading and one empty row.
    Screen<frmAllergicHistory>().listHistory(Pnr, "200002", "Waran");
    EXPECT_EQ(Screen<frmAllergicHistory>().FlexGrid->Rows(), 2);
    EXPECT_EQ(Screen<frmAllergicHistory>().FlexGrid->TextMatrix(1, 1), "");
    EXPECT_TRUE(boxes.empty());
}

TEST_F(NoteDialogsTest, a_history_fill_that_fails_says_so_and_keeps_the_rows_before) {
    storePatient("1", "",
                 historyOf({{"1", "2026-03-15 14:05:09", "Dr. Ek", "Utslag"},
                            {"ja", "2026-03-16 10:00:00", "Dr. Ek", "Klåda"}}));
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    history.listHistory(Pnr, "100001", "Alvedon");
    history.listHistory(Pnr, "O'Brien", "Alvedon");
    history.listHistory("190001010000", "100001", "Alvedon");
    ASSERT_EQ(boxes.size(), 3u);
    EXPECT_EQ(boxes[0].text, "Kunde inte skapa struktur för flexgrid: Typerna matchar inte");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(boxes[0].title, "Mirelo");
    EXPECT_EQ(boxes[1].text.rfind("Kunde inte skapa struktur för flexgrid: ", 0), 0u);
    EXPECT_EQ(boxes[2].text, "Kunde inte skapa struktur för flexgrid: Filen hittades inte");
    EXPECT_EQ(history.FlexGrid->TextMatrix(1, 4), "Utslag");
    EXPECT_EQ(history.FlexGrid->Rows(), 3) << "the row that failed was added before it failed";
}

} // namespace

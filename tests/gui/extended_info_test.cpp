#include "core/application_context.h"
#include "patient_file_builder.h"
#include "platform/gui/flex_grid.h"
#include "screen_test.h"
#include "stored_patient_reading.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;
using support::ProductFields;

namespace {

const std::string Pnr = "191212121212";
const std::string Signature = "Dr. Karin Lindqvist";
const std::string Now = "2026-03-15 14:05:09";
const QColor Red(255, 0, 0);

class ExtendedInfoTest : public support::ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        session().gSignature = Signature;
        frmExtendedInfo::Text1Changed = false;
        frmExtendedInfo::Text2Changed = false;
        mainApp &frame = Screen<mainApp>();
        frame.show();
        // Leaving a box is a move of the focus, and the focus moves only in the active window.
        frame.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    }

    static ProductFields product(const std::string &id, const std::string &regNr,
                                 const std::string &atc, const std::string &note,
                                 const std::string &allergic = "0") {
        ProductFields fields;
        fields.id = id;
        fields.regNr = regNr;
        fields.atcCode = atc;
        fields.note = note;
        fields.allergic = allergic;
        fields.productName = "Preparat " + id;
        return fields;
    }

    static void store(const std::vector<ProductFields> &products, const std::string &note = "",
                      const std::string &by = "", const std::string &time = "") {
        std::string text = support::patientText(Pnr, "Tolvansson", "Tolvan", products);
        const std::string empty = "<GeneralInfo></GeneralInfo><GeneralInfoBy></GeneralInfoBy>"
                                  "<GeneralInfoTimestamp></GeneralInfoTimestamp>";
        text.replace(text.find(empty), empty.size(),
                     "<GeneralInfo>" + note + "</GeneralInfo><GeneralInfoBy>" + by +
                         "</GeneralInfoBy><GeneralInfoTimestamp>" + time +
                         "</GeneralInfoTimestamp>");
        support::storePatientFile(Pnr + ".xml", text);
    }

    // As the medication view's note button opens it: filled while the view is still on show,
    // then in its place.
    static frmExtendedInfo &open() {
        mainApp &frame = Screen<mainApp>();
        frmShowPatient &view = Screen<frmShowPatient>();
        view.ReadPatientFolder(Pnr);
        frame.showChild(&view);
        frmExtendedInfo &screen = Screen<frmExtendedInfo>();
        screen.ReadPatientFolder(Pnr);
        frame.hideChild(&view);
        frame.placeChild(&view, 0, 0);
        screen.FlexGrid->setRow(1);
        screen.FlexGrid_SelChange();
        screen.txtNoteSaved->clear();
        frame.showChild(&screen);
        return screen;
    }

    static void clickRow(frmExtendedInfo &screen, int row) {
        platform::FlexGrid *grid = screen.FlexGrid;
        const QRect cell = grid->visualItemRect(grid->item(row, 3));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    }

    // Gives the reason dialog that the next action opens its reason and presses OK.
    static void answerReason(const QString &reason) {
        QTimer::singleShot(0, [reason] {
            frmAllergicExtendedInfo &dialog = Screen<frmAllergicExtendedInfo>();
            dialog.txtExtendedMedicalInfo->setPlainText(reason);
            QTest::mouseClick(dialog.cmdSave, Qt::LeftButton);
        });
    }

    static void typeAtEnd(QPlainTextEdit *box, const QString &text) {
        QTest::mouseClick(box->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        box->moveCursor(QTextCursor::End);
        QTest::keyClicks(box, text);
    }

    support::Fields productFields(const std::string &id) {
        const auto stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
        return support::childFields(stored.selectSingleNode("//Product[ID = \"" + id + "\"]"));
    }

    static std::string field(const support::Fields &fields, const std::string &name) {
        for (const auto &[key, value] : fields) {
            if (key == name) {
                return value;
            }
        }
        return "<none>";
    }
};

TEST_F(ExtendedInfoTest, the_list_holds_the_newest_product_of_each_number_with_a_note_or_warning) {
    ProductFields withHistory = product("A2", "100", "X01", "N1");
    withHistory.allergicHistory = "1";
    store({withHistory, product("A1", "100", "X01", "äldre"),
           product("B", "200", "X01", "dold", "1"), product("C", "300", "Y01", ""),
           product("D", "400", "", "d"), product("E", "500", "", "e")});
    frmExtendedInfo &screen = open();
    platform::FlexGrid *grid = screen.FlexGrid;

    const std::vector<std::string> ids = {"A2", "B", "D", "E", ""};
    for (int row = 1; row <= 5; ++row) {
        EXPECT_EQ(grid->TextMatrix(row, 6).toStdString(), ids[row - 1]) << row;
    }
    const std::vector<int> icons = {grid->CellPictureAt(1, 0), grid->CellPictureAt(1, 1),
                                    grid->CellPictureAt(2, 0), grid->CellPictureAt(2, 1)};
    EXPECT_EQ(icons, (std::vector<int>{3, 2, 0, 1})) << "a warning hides the note";
    EXPECT_EQ(grid->TextMatrix(1, 2), "Preparat A2 Tablett 500 mg Orion");
    EXPECT_EQ(grid->TextMatrix(1, 5), "1 X 20 st");
    EXPECT_EQ(grid->TextMatrix(1, 8), "100");
    // Equal ATC codes, and two empty ones, stand in red in every column.
    for (int row = 1; row <= 4; ++row) {
        EXPECT_EQ(grid->CellForeColorAt(row, 0), Red) << row;
        EXPECT_EQ(grid->CellForeColorAt(row, 9), Red) << row;
    }
    // The pointer has not been on the grid yet: nothing is picked.
    EXPECT_EQ(screen.Frame2->title(), "");
    EXPECT_TRUE(screen.cmdDeleteNote->isVisible());

    std::vector<ProductFields> many;
    for (int n = 10; n < 22; ++n) {
        many.push_back(
            product("M" + std::to_string(n), std::to_string(n), "Z" + std::to_string(n), "n"));
    }
    store(many);
    screen.ReadPatientFolder(Pnr);
    EXPECT_EQ(grid->Rows(), 13);
    EXPECT_EQ(grid->TextMatrix(12, 6), "M21");

    store({product("F", "600", "F01", "f"), product("G", "700", "G01", "g")});
    screen.ReadPatientFolder(Pnr);
    EXPECT_EQ(grid->Rows(), 13);
    EXPECT_EQ(grid->TextMatrix(3, 6), "");
    EXPECT_NE(grid->CellForeColorAt(1, 2), Red);

    clickRow(screen, 5);
    EXPECT_EQ(screen.Frame2->title(), "");
    EXPECT_FALSE(screen.Text2->isEnabled());
    EXPECT_FALSE(screen.cmdDeleteNote->isVisible());
    EXPECT_FALSE(screen.cmdAllergicHistory->isVisible());
}

TEST_F(ExtendedInfoTest, the_general_note_saves_on_leaving_and_a_refill_keeps_what_is_typed) {
    store({product("S1_1", "100", "X01", "Första raden\nAndra raden")}, "Rad ett\nRad två", "Dr A",
          "2026-01-01 10:00:00");
    frmExtendedInfo &screen = open();
    EXPECT_EQ(screen.Frame1->title(), "Övrig information om Tolvan Tolvansson");
    EXPECT_EQ(screen.Text1->toPlainText(), "Rad ett\nRad två");
    EXPECT_EQ(screen.Label3->text(), "Dr A - 2026-01-01 10:00:00");
    EXPECT_FALSE(frmExtendedInfo::Text1Changed);

    typeAtEnd(screen.Text1, "X");
    EXPECT_TRUE(frmExtendedInfo::Text1Changed);
    clickRow(screen, 1);
    const auto stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
    EXPECT_EQ(stored.selectSingleNode("//GeneralInfoBy").text(), Signature);
    EXPECT_EQ(stored.selectSingleNode("//GeneralInfoTimestamp").text(), Now);
    EXPECT_EQ(screen.Label3->text().toStdString(), Signature + " - " + Now);
    EXPECT_EQ(screen.Frame2->title(),
              "Notering för patient ang: Preparat S1_1 Tablett 500 mg Orion, ordinerat av: "
              "Doktor Ek");
    EXPECT_EQ(screen.Text2->toPlainText(), "Första raden\nAndra raden");
    EXPECT_FALSE(frmExtendedInfo::Text2Changed);

    // Someone else writes the file meanwhile; deleting the only note refills the list while
    // the medication view is hidden: the typed general note stays, its author is read anew.
    store({product("S1_1", "100", "X01", "Första raden")}, "Annan", "Dr B", "2026-02-02 08:00:00");
    screen.deleteNote();
    EXPECT_EQ(screen.Text1->toPlainText(), "Rad ett\nRad tvåX");
    EXPECT_EQ(screen.Label3->text(), "Dr B - 2026-02-02 08:00:00");
    EXPECT_EQ(screen.FlexGrid->TextMatrix(1, 6), "");
    EXPECT_EQ(screen.Frame2->title(), "");
    EXPECT_FALSE(screen.Text2->isEnabled());
    const support::Fields deleted = productFields("S1_1");
    EXPECT_EQ(field(deleted, "ExtendedMedicalInfo"), "");
    EXPECT_EQ(field(deleted, "ExtendedMedicalInfoBy"), Signature);

    QTest::mouseClick(screen.cmdClose, Qt::LeftButton);
    EXPECT_FALSE(IsLoaded<frmExtendedInfo>());
    frmShowPatient &view = Screen<frmShowPatient>();
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(view.FlexGrid->Row(), 1);
    EXPECT_EQ(view.Frame1->title(), "Preparat S1_1 Tablett 500 mg Orion, ordinerat av: Doktor Ek");
    EXPECT_TRUE(frmExtendedInfo::Text1Changed) << "the flag outlives the screen";
    EXPECT_TRUE(boxes.empty());
}

TEST_F(ExtendedInfoTest, once_typed_the_note_saves_at_every_leaving_and_failures_are_shown) {
    store({product("S1_1", "100", "X01", "gammal"), product("S2_1", "200", "Y01", "annan")});
    frmExtendedInfo &screen = open();
    clickRow(screen, 1);
    typeAtEnd(screen.Text2, " ny");
    clickRow(screen, 2);
    support::Fields saved = productFields("S1_1");
    EXPECT_EQ(field(saved, "ExtendedMedicalInfo"), "gammal ny");
    EXPECT_EQ(field(saved, "ExtendedMedicalInfoBy"), Signature);
    EXPECT_EQ(field(saved, "ExtendedMedicalInfoTimestamp"), Now);
    EXPECT_EQ(screen.Text2->toPlainText(), "annan");
    EXPECT_EQ(screen.txtNoteChanged->text(), " - ");

    // Nothing typed this time, and still saved, with the new author.
    session().gSignature = "Dr. Other";
    QTest::mouseClick(screen.Text2->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
    clickRow(screen, 1);
    EXPECT_EQ(field(productFields("S2_1"), "ExtendedMedicalInfoBy"), "Dr. Other");

    const std::string before = support::readBytes(path("data/" + Pnr + ".xml"));
    typeAtEnd(screen.Text2, "");
    screen.Text2->insertPlainText(QStringLiteral("û"));
    clickRow(screen, 2);
    EXPECT_EQ(support::readBytes(path("data/" + Pnr + ".xml")), before);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text.substr(0, 2), "5 ");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::None);

    // A file gone from under the screen: the return fails before the screen unloads.
    std::filesystem::remove(path("data/" + Pnr + ".xml"));
    QTest::mouseClick(screen.cmdClose, Qt::LeftButton);
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[1].text, "-2147220985 Patientens fil saknas.");
    EXPECT_TRUE(IsLoaded<frmExtendedInfo>());
}

TEST_F(ExtendedInfoTest, SelectFlexGridID_looks_no_further_than_the_current_row) {
    // The red marking of rows 1 and 2 leaves row 2 current after the fill.
    store({product("S1_1", "R1", "X01", "a"), product("S2_1", "R2", "X01", "b"),
           product("S3_1", "R3", "Y01", "c")});
    frmExtendedInfo &screen = open();
    platform::FlexGrid *grid = screen.FlexGrid;
    QTest::mouseMove(grid->viewport(), grid->visualItemRect(grid->item(1, 2)).center());

    struct Case {
        std::string id;
        std::string regNr;
        QString shown;
    };
    for (const Case &each : std::vector<Case>{{"S3_1", "", ""},
                                              {"S1_1", "", "Preparat S1_1"},
                                              {"S9_9", "R2", "Preparat S2_1"},
                                              {"S9_9", "R3", ""}}) {
        screen.ReadPatientFolder(Pnr);
        ASSERT_EQ(grid->Row(), 2);
        screen.Frame2->setTitle(QString());
        grid->setHighLight(0);
        screen.SelectFlexGridID(each.id, each.regNr);
        EXPECT_EQ(screen.Frame2->title().section(QLatin1Char(' '), 4, 5), each.shown) << each.id;
        EXPECT_EQ(grid->HighLight(), each.shown.isEmpty() ? 0 : 1) << each.id;
    }
}

TEST_F(ExtendedInfoTest, a_warning_ticked_with_a_reason_shows_its_history_and_goes_with_the_note) {
    ProductFields older = product("S1_1", "100", "X01", "gammal");
    older.checked = "0";
    store(
        {product("S2_1", "100", "X01", "ont i magen"), older, product("S3_1", "300", "Y01", "c")});
    frmExtendedInfo &screen = open();
    clickRow(screen, 1);

    answerReason("Utslag");
    QTest::mouseClick(screen.chkAllergic, Qt::LeftButton);
    EXPECT_FALSE(IsLoaded<frmAllergicExtendedInfo>());
    for (const std::string id : {"S2_1", "S1_1"}) {
        EXPECT_EQ(field(productFields(id), "Allergic"), "1") << id;
        EXPECT_EQ(field(productFields(id), "AllergicHistory"), "1") << id;
    }
    const auto stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
    EXPECT_EQ(support::childFields(stored.selectSingleNode("//History/AllergicHistory")),
              (support::Fields{{"RegNr", "100"},
                               {"AllergicStatusHistory", "1"},
                               {"AllergicInfoHistory", "Utslag"},
                               {"AllergicInfoByHistory", Signature},
                               {"AllergicInfoTimestampHistory", Now}}));
    // Refilled, and the product picked again on its row.
    platform::FlexGrid *grid = screen.FlexGrid;
    EXPECT_EQ(grid->CellPictureAt(1, 0), 3);
    EXPECT_EQ(grid->CellPictureAt(1, 1), 1);
    EXPECT_EQ(grid->Row(), 1);
    EXPECT_TRUE(screen.cmdAllergicHistory->isVisible());
    EXPECT_TRUE(screen.chkAllergic->isChecked());

    // The icon looks the record up by the product number; the button by the dosage.
    const QRect icon = grid->visualItemRect(grid->item(1, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, icon.center());
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    EXPECT_TRUE(history.isVisible());
    EXPECT_FALSE(history.isModal());
    EXPECT_EQ(history.FlexGrid->TextMatrix(1, 1), "Ja");
    QTest::mouseClick(history.cmdBack, Qt::LeftButton);
    QString listedByButton = "not shown";
    QTimer::singleShot(0, [&listedByButton] {
        frmAllergicHistory &dialog = Screen<frmAllergicHistory>();
        listedByButton = dialog.FlexGrid->TextMatrix(1, 1);
        QTest::mouseClick(dialog.cmdBack, Qt::LeftButton);
    });
    QTest::mouseClick(screen.cmdAllergicHistory, Qt::LeftButton);
    EXPECT_EQ(listedByButton, "");

    answerReason("Fel preparat");
    QTest::mouseClick(screen.cmdDeleteNote, Qt::LeftButton);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Denna notering innehåller varning om läkemedelsöverkänslighet.\r\n"
                             "Är du säker på att du vill ta bort notering?");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Warning);
    for (const std::string id : {"S2_1", "S1_1"}) {
        const support::Fields fields = productFields(id);
        EXPECT_EQ(field(fields, "Allergic"), "0") << id;
        EXPECT_EQ(field(fields, "ExtendedMedicalInfo"), "") << id;
        EXPECT_EQ(field(fields, "AllergicHistory"), "1") << id;
    }
    const auto after = support::readStoredPatient(path("data/" + Pnr + ".xml"));
    EXPECT_EQ(after.selectNodes("//History/AllergicHistory").size(), 2u);
    EXPECT_EQ(after.selectSingleNode("//History/AllergicHistory/AllergicStatusHistory").text(),
              "0");
    EXPECT_EQ(grid->TextMatrix(1, 6), "S3_1");
    EXPECT_EQ(screen.Text2->toPlainText(), "c");
    EXPECT_TRUE(frmExtendedInfo::Text2Changed) << "the dialog emptied the note as the user would";
}

} // namespace

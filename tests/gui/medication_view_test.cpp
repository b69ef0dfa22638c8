#include "core/application_context.h"
#include "korvalo_process.h"
#include "patient_file_builder.h"
#include "platform/file_system.h"
#include "platform/gui/flex_grid.h"
#include "prescription_message_builder.h"
#include "screen_test.h"
#include "settings_file_builder.h"
#include "stored_patient_reading.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;
using support::ProductFields;

namespace {

// A browser that only records what the hand-off asked of it.
struct RecordedHandoff {
    std::string url;
    std::string txtXml;
};

class RecordingBrowser : public platform::Browser {
  public:
    explicit RecordingBrowser(std::vector<RecordedHandoff> &log) : log_(log) { log_.push_back({}); }
    void Navigate(const std::string &url) override { log_.back().url = url; }
    int ReadyState() override { return platform::ReadyStateComplete; }
    void Sleep(int) override {}
    void SetFirstFormField(const std::string &, const std::string &value) override {
        log_.back().txtXml = value;
    }
    void SubmitFirstForm() override {}
    void SetLoginFormField(const std::string &, const std::string &) override {}
    void SubmitLoginForm() override {}
    void ShowMaximized() override {}
    void SetVisible() override {}
    void BringToFront() override {}

  private:
    std::vector<RecordedHandoff> &log_;
};

class MedicationViewTest : public support::ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        session().gSignature = "Dr. Karin Lindqvist";
        session().gServer = "http://127.0.0.1:9";
        session().gInitXmlUrl = "/Public/Mirelo/InitXML.aspx";
        platform::setBrowserFactory(
            [this] { return std::make_unique<RecordingBrowser>(handoffs); });
    }

    static ProductFields product(const std::string &id, const std::string &name,
                                 const std::string &atc, const std::string &checked = "1") {
        ProductFields fields;
        fields.id = id;
        fields.regNr = "R" + id;
        fields.productName = name;
        fields.atcCode = atc;
        fields.checked = checked;
        return fields;
    }

    void storePatient(const std::string &pnr, const std::vector<ProductFields> &products) {
        support::storePatientFile(pnr + ".xml",
                                  support::patientText(pnr, "Tolvansson", "Tolvan", products));
    }

    static void clickCell(platform::FlexGrid *grid, int row, int col) {
        const QRect cell = grid->visualItemRect(grid->item(row, col));
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    }

    static void search(const QString &text) {
        frmMain &screen = Screen<frmMain>();
        screen.txtSearch->clear();
        QTest::keyClicks(screen.txtSearch, text);
        QTest::keyClick(screen.txtSearch, Qt::Key_Return);
    }

    // The frame shown and active, as the window system leaves it for the keys to reach it.
    static mainApp &showFrame() {
        mainApp &frame = Screen<mainApp>();
        frame.show();
        frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
        return frame;
    }

    // Opens the patient as a whole number in the search box does.
    static frmShowPatient &openPatient(const QString &pnr) {
        showFrame();
        search(pnr);
        return Screen<frmShowPatient>();
    }

    std::vector<RecordedHandoff> handoffs;
};

TEST_F(MedicationViewTest, a_visit_logs_in_finds_the_patient_and_takes_a_product_out) {
    support::KorvaloProcess korvalo;
    support::SettingsFields settings;
    settings.dataPath = appDir() + "/data/";
    settings.server = korvalo.baseUrl();
    support::writeSettingsFile(settings);
    storePatient("191212121212",
                 {product("S2_1", "Alvedon", "N02BE01"), product("S1_1", "Ipren", "M01AE01")});
    storePatient("202002022222", {});

    frmSplash &splash = Screen<frmSplash>();
    QTest::keyClicks(splash.txtUsername, "demo");
    QTest::keyClicks(splash.txtPassword, "demo123");
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);
    ASSERT_TRUE(IsLoaded<mainApp>());
    Screen<mainApp>().show();

    search("1912");
    frmMain &searchScreen = Screen<frmMain>();
    ASSERT_EQ(searchScreen.List1->count(), 1);
    EXPECT_EQ(searchScreen.List1->item(0)->text(), "191212121212 Tolvansson");
    EXPECT_EQ(searchScreen.List1->currentRow(), 0);
    QTest::keyClick(searchScreen.List1, Qt::Key_Return);

    frmShowPatient &view = Screen<frmShowPatient>();
    ASSERT_TRUE(view.isVisible());
    EXPECT_FALSE(searchScreen.isVisible());
    EXPECT_EQ(view.txtPnr->text(), "191212121212");
    EXPECT_EQ(view.txtFName->text(), "Tolvan Tolvansson");
    EXPECT_EQ(view.FlexGrid->TextMatrix(1, 3), "Alvedon Tablett 500 mg Orion");
    EXPECT_EQ(view.FlexGrid->TextMatrix(0, 3), "Läkemedel");
    EXPECT_EQ(view.FlexGrid->CellPictureAt(1, 2), 1);
    EXPECT_EQ(view.Frame1->title(), "Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek");

    // Taking a product out asks for a note on it, after it has been selected where it went.
    std::string noteAskedFor;
    QTimer::singleShot(0, [&] {
        frmMedicalNote &note = Screen<frmMedicalNote>();
        noteAskedFor = note.isVisible() ? note.ID : "";
        note.txtExtendedMedicalInfo->setPlainText(QStringLiteral("Yrsel"));
        note.cmdSave->click();
    });
    clickCell(view.FlexGrid, 1, 2);
    EXPECT_EQ(noteAskedFor, "S2_1");
    const auto stored = support::readStoredPatient(path("data/191212121212.xml"));
    const auto taken = stored.selectSingleNode("//Product[ID = \"S2_1\"]");
    EXPECT_EQ(taken.selectSingleNode("Checked").text(), "0");
    EXPECT_EQ(taken.selectSingleNode("ExtendedMedicalInfo").text(), "Yrsel");
    EXPECT_EQ(taken.selectSingleNode("TakenOutBy").text(), session().gSignature);
    EXPECT_TRUE(
        QRegularExpression(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d$)")
            .match(QString::fromStdString(taken.selectSingleNode("TakenOutTimestamp").text()))
            .hasMatch());
    // With past products shown the product moves below the current one and stays selected.
    EXPECT_EQ(view.FlexGrid->TextMatrix(2, 7), "S2_1");
    EXPECT_EQ(view.FlexGrid->Row(), 2);
    EXPECT_EQ(view.FlexGrid->CellPictureAt(2, 2), 2);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(MedicationViewTest, the_grid_shows_icons_red_duplicates_the_warning_button_and_grows) {
    ProductFields warned = product("A_1", "Waran", "B01AA03");
    warned.allergic = "1";
    warned.note = "Blödningsrisk";
    ProductFields historic = product("B_1", "Levaxin", "H03AA01");
    historic.allergicHistory = "1";
    historic.note = "Fastande";
    std::vector<ProductFields> products{warned, historic, product("C_1", "Alvedon", "N02BE01"),
                                        product("D_1", "Panodil", "N02BE01")};
    for (int i = 0; i < 16; ++i) {
        products.push_back(product("P_" + std::to_string(i), "Gammal", "X", "0"));
    }
    storePatient("191212121212", products);

    frmShowPatient &view = Screen<frmShowPatient>();
    EXPECT_EQ(view.FlexGrid->Rows(), 14);
    view.ReadPatientFolder("191212121212");
    platform::FlexGrid *grid = view.FlexGrid;
    EXPECT_EQ(grid->Rows(), 21);
    EXPECT_EQ(grid->CellPictureAt(1, 1), 3) << "a warning hides the note";
    EXPECT_EQ(grid->CellPictureAt(2, 0), 7);
    EXPECT_EQ(grid->CellPictureAt(2, 1), 6);
    EXPECT_EQ(grid->CellPictureAt(5, 2), 2);
    EXPECT_EQ(grid->CellForeColorAt(3, 10), QColor(255, 0, 0));
    EXPECT_EQ(grid->CellForeColorAt(4, 0), QColor(255, 0, 0));
    EXPECT_NE(grid->CellForeColorAt(1, 3), QColor(255, 0, 0));
    EXPECT_TRUE(grid->isColumnHidden(7));
    EXPECT_EQ(grid->TextMatrix(0, 10), "                       Dosering");
    EXPECT_TRUE(grid->CellFontBoldAt(0, 3));
    EXPECT_FALSE(view.cmdExtInfo->isHidden());
    EXPECT_TRUE(view.cmdNote->isHidden());
    // Only ids known to be in the grid are asked for: another one runs past the last row.
    EXPECT_THROW(view.SelectFlexGridID("not-in-the-grid"), MireloError);

    // Past products hidden: the rows they stood in stay, blank.
    view.chkMode->click();
    EXPECT_FALSE(view.chkMode->isChecked());
    EXPECT_EQ(grid->Rows(), 21);
    EXPECT_EQ(grid->TextMatrix(5, 3), "");
    EXPECT_EQ(grid->Row(), 1);
    EXPECT_FALSE(view.Label11->isHidden()) << "the first row carries a warning";
}

TEST_F(MedicationViewTest,
       a_whole_number_opens_the_view_and_one_without_a_file_goes_to_the_service) {
    storePatient("191212121212", {product("S1_1", "Alvedon", "N02BE01")});
    Screen<mainApp>().show();

    search("19121212-1212");
    EXPECT_EQ(Screen<frmMain>().List1->count(), 0);
    EXPECT_TRUE(Screen<frmShowPatient>().isVisible());
    EXPECT_TRUE(Screen<frmMain>().isVisible()) << "exact mode leaves the search screen showing";
    EXPECT_TRUE(handoffs.empty());

    Screen<frmShowPatient>().cmdNyPatient_Click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    search("1999");
    ASSERT_EQ(handoffs.size(), 1u);
    EXPECT_EQ(handoffs[0].url, "http://127.0.0.1:9/Public/Mirelo/InitXML.aspx");
    platform::XmlDocument sent;
    ASSERT_TRUE(sent.loadXML(handoffs[0].txtXml));
    EXPECT_EQ(sent.selectSingleNode("//PrescriberInfo/Pnr").text(), "1999");

    search("--");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Ange personnummer vid sökning");
}

TEST_F(MedicationViewTest, a_file_deleted_before_selection_is_reported_and_the_search_runs_again) {
    storePatient("191212121212", {});
    storePatient("191313131313", {});
    Screen<mainApp>().show();
    search("19");
    frmMain &screen = Screen<frmMain>();
    ASSERT_EQ(screen.List1->count(), 2);
    std::filesystem::remove(path("data/191212121212.xml"));
    screen.cmdSelPat->click();
    ASSERT_GE(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Patientens fil saknas.");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    ASSERT_EQ(screen.List1->count(), 1);
    EXPECT_EQ(screen.List1->item(0)->text(), "191313131313 Tolvansson");

    screen.List1->clear();
    screen.cmdSelPat->click();
    EXPECT_EQ(
        boxes.back().text,
        "Det finns inga patienter i listan!\r\nAnvänd \"Sök\"-funktionen eller \"Lista alla\".");
    EXPECT_EQ(boxes.back().icon, platform::MsgBoxIcon::Exclamation);
}

TEST_F(MedicationViewTest, a_tick_after_the_file_vanished_shows_error_53_whichever_way_it_came) {
    struct Road {
        const char *name;
        int row;
        bool byKeyboard;
    };
    for (const Road road : {Road{"the marked row", 1, false}, Road{"another row", 2, false},
                            Road{"a row the keyboard chose", 2, true}}) {
        storePatient("191212121212",
                     {product("S2_1", "Alvedon", "N02BE01"), product("S1_1", "Ipren", "M01AE01")});
        frmShowPatient &view = openPatient("191212121212");
        if (road.byKeyboard) {
            QTest::keyClick(view.FlexGrid, Qt::Key_Down);
        }
        std::filesystem::remove(path("data/191212121212.xml"));
        boxes.clear();
        clickCell(view.FlexGrid, road.row, 2);
        ASSERT_EQ(boxes.size(), 1u) << road.name;
        EXPECT_EQ(boxes[0].text, "Filen hittades inte") << road.name;
        EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop) << road.name;
        EXPECT_TRUE(view.isVisible()) << road.name;
        EXPECT_EQ(view.FlexGrid->CellPictureAt(road.row, 2), 1) << road.name;
        view.cmdNyPatient_Click();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(MedicationViewTest, the_view_opens_whole_in_the_frames_corner_with_the_keys_in_the_list) {
    storePatient("191212121212",
                 {product("A_1", "Alvedon", "N02BE01"), product("B_1", "Ipren", "M01AE01"),
                  product("C_1", "Waran", "B01AA03")});
    mainApp &frame = showFrame();
    // Whole inside the frame's client area, txtLoggedIn and all, at the corner.
    const auto standsWhole = [&frame](QWidget &screen, const char *name) {
        const QWidget *panel = screen.parentWidget();
        EXPECT_EQ(panel->geometry(), QRect(QPoint(0, 0), screen.size())) << name;
        EXPECT_TRUE(frame.mdiArea->viewport()->rect().contains(panel->geometry())) << name;
    };
    standsWhole(Screen<frmMain>(), "frmMain");
    // Opened by a whole number, and by a line of the list.
    search("191212121212");
    standsWhole(Screen<frmShowPatient>(), "exact");
    Screen<frmShowPatient>().cmdNyPatient_Click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    search("1912");
    QTest::keyClick(Screen<frmMain>().List1, Qt::Key_Return);
    frmShowPatient &view = Screen<frmShowPatient>();
    standsWhole(view, "list");

    platform::FlexGrid *grid = view.FlexGrid;
    EXPECT_EQ(QApplication::focusWidget(), grid);
    const struct {
        Qt::Key key;
        int row;
        QString caption;
    } moves[] = {{Qt::Key_Down, 2, "Ipren"},
                 {Qt::Key_End, 13, ""},
                 {Qt::Key_Home, 1, "Alvedon"},
                 {Qt::Key_PageDown, 13, ""},
                 {Qt::Key_PageUp, 1, "Alvedon"}};
    for (const auto &move : moves) {
        QTest::keyClick(grid, move.key);
        EXPECT_EQ(grid->Row(), move.row) << move.key;
        EXPECT_TRUE(view.Frame1->title().startsWith(move.caption)) << move.key;
    }
}

TEST_F(MedicationViewTest,
       enter_prescribes_escape_goes_to_a_new_patient_and_ctrl_A_asks_to_close_everywhere) {
    storePatient("191212121212", {product("A_1", "Alvedon", "N02BE01")});
    frmShowPatient &view = openPatient("191212121212");
    for (QWidget *focus : std::initializer_list<QWidget *>{view.FlexGrid, view.chkMode}) {
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_Return);
    }
    EXPECT_EQ(handoffs.size(), 2u);

    for (QWidget *focus :
         std::initializer_list<QWidget *>{view.FlexGrid, Screen<frmMain>().txtSearch}) {
        nextAnswers.push_back(platform::MsgBoxResult::No);
        focus->setFocus();
        QTest::keyClick(focus, Qt::Key_A, Qt::ControlModifier);
    }
    ASSERT_EQ(boxes.size(), 2u);
    for (const auto &box : boxes) {
        EXPECT_EQ(box.text, "Vill du verkligen avsluta Mirelo?");
    }

    view.chkMode->setFocus();
    QTest::keyClick(view.chkMode, Qt::Key_Escape);
    EXPECT_FALSE(IsLoaded<frmShowPatient>());
    EXPECT_EQ(QApplication::focusWidget(), Screen<frmMain>().txtSearch);
}

TEST_F(MedicationViewTest, a_long_signature_stops_at_the_next_caption_and_a_refresh_marks_nothing) {
    ProductFields alvedon = product("A_1", "Alvedon", "N02BE01");
    alvedon.insertedBy = "Dr. Karl-Fredrik Lindqvist-Öberg, Vårdcentralen Östra Hamngatan";
    alvedon.takenOutBy = alvedon.insertedBy;
    storePatient("191212121212", {alvedon, product("B_1", "Ipren", "M01AE01")});
    frmShowPatient &view = openPatient("191212121212");
    for (const auto &[value, caption] :
         {std::pair{view.Label12, view.Label15}, std::pair{view.Label13, view.Label14}}) {
        EXPECT_EQ(value->text().toStdString(), alvedon.insertedBy);
        EXPECT_EQ(value->toolTip().toStdString(), alvedon.insertedBy);
        EXPECT_LE(value->geometry().right(), caption->geometry().left());
    }

    // A message taken in by the timer fills the list again and marks no row.
    support::PrescriptionMessage message;
    message.items.push_back({});
    support::writePrescriptionMessage(path("in/recept.xml"), message);
    for (int tick = 0; tick < 10; ++tick) {
        Screen<mainApp>().Timer1_Timer();
    }
    EXPECT_FALSE(platform::FileExists(path("in/recept.xml")));
    EXPECT_TRUE(view.FlexGrid->selectedRanges().isEmpty());
    EXPECT_TRUE(view.Frame1->title().startsWith("Alvedon"));
}

TEST_F(MedicationViewTest, the_icons_and_buttons_open_the_notes_and_the_history_of_a_product) {
    ProductFields waran = product("A_1", "Waran", "B01AA03");
    waran.allergic = "1";
    waran.allergicHistory = "1";
    storePatient("191212121212", {waran, product("B_1", "Alvedon", "N02BE01")});
    showFrame();
    search("191212121212");
    frmShowPatient &view = Screen<frmShowPatient>();

    // The warning icon: the extended information in place of the view. Closing it unloads it.
    clickCell(view.FlexGrid, 1, 1);
    EXPECT_TRUE(Screen<frmExtendedInfo>().isVisible());
    EXPECT_FALSE(view.isVisible());
    Screen<frmExtendedInfo>().cmdClose_Click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(view.isVisible());

    // The history icon: the product's records beside the view.
    clickCell(view.FlexGrid, 1, 0);
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    EXPECT_TRUE(history.isVisible());
    EXPECT_TRUE(view.isVisible());
    EXPECT_TRUE(history.Frame1->title().contains(QStringLiteral("Waran")));
    history.cmdBack_Click();

    // Whichever note button stands on the screen opens the extended information at row 1.
    QAbstractButton *noteButton =
        view.cmdNote->isVisible() ? static_cast<QAbstractButton *>(view.cmdNote) : view.cmdExtInfo;
    noteButton->click();
    EXPECT_TRUE(Screen<frmExtendedInfo>().isVisible());
    EXPECT_FALSE(view.isVisible());
    EXPECT_EQ(Screen<frmExtendedInfo>().FlexGrid->Row(), 1);
    EXPECT_TRUE(boxes.empty());
}

} // namespace

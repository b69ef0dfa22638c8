#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "patient_file_builder.h"
#include "platform/gui/flex_grid.h"
#include "platform/gui/folder_picker.h"
#include "prescription_message_builder.h"
#include "screen_test.h"
#include "settings_file_builder.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

const std::string Pnr = "191212121212";

class VisitDialogsTest : public support::ScreenTest {
  protected:
    void SetUp() override {
        ScreenTest::SetUp();
        session().gSignature = "Dr. Karin Lindqvist";
        support::writeSettingsFile({.dataPath = appDir() + "/data/"});
    }

    static mainApp &showFrame() {
        mainApp &frame = Screen<mainApp>();
        frame.show();
        frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
        return frame;
    }

    static frmShowPatient &openPatient(const std::string &pnr) {
        showFrame();
        frmMain &search = Screen<frmMain>();
        search.txtSearch->setText(QString::fromStdString(pnr));
        QTest::keyClick(search.txtSearch, Qt::Key_Return);
        return Screen<frmShowPatient>();
    }

    // A modal dialog runs its own loop: what the user does in it is queued before it opens.
    template <typename Dialog> static void whileOpen(std::function<void(Dialog &)> act) {
        QTimer::singleShot(0, [act] {
            ASSERT_TRUE(IsLoaded<Dialog>() && Screen<Dialog>().isVisible());
            act(Screen<Dialog>());
        });
    }

    static void unloadNow() { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    std::string settingsBytes() const { return support::readBytes(path("System/Settings.xml")); }
};

TEST_F(VisitDialogsTest, the_details_show_the_file_with_its_blanks_and_OK_unloads_them) {
    std::string text = support::patientText(Pnr, "Åström", "", {support::ProductFields{}});
    for (const char *empty :
         {"<StreetName>Storgatan 1</StreetName>", "<PostalCode>111 22</PostalCode>"}) {
        const std::string element(empty);
        text.replace(text.find(element), element.size(),
                     element.substr(0, element.find('>') + 1) + element.substr(element.rfind('<')));
    }
    support::storePatientFile(Pnr + ".xml", text);
    const std::string before = support::readBytes(path("data/" + Pnr + ".xml"));
    frmShowPatient &view = openPatient(Pnr);

    std::vector<QString> shown;
    whileOpen<frmPatInfo>([&shown](frmPatInfo &details) {
        shown = {details.windowTitle(),   details.Frame1->title(),    details.txtPnr->text(),
                 details.txtName->text(), details.txtAddress->text(), details.txtZipCity->text()};
        QTest::keyClick(details.cmdOK, Qt::Key_Space);
    });
    QTest::mouseClick(view.cmdPatInfo, Qt::LeftButton);
    unloadNow();
    EXPECT_EQ(shown, (std::vector<QString>{"Mirelo", "Patientuppgifter", "191212121212", " Åström",
                                           "", " Stockholm"}));
    EXPECT_FALSE(IsLoaded<frmPatInfo>());
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(support::readBytes(path("data/" + Pnr + ".xml")), before);
    EXPECT_TRUE(boxes.empty());
}

// The view's buttons have no handler: a file gone or damaged since the view was filled ends
// the process with the run time's report, and the file stays as it was.
TEST_F(VisitDialogsTest, a_file_lost_or_damaged_under_the_buttons_ends_the_process_untouched) {
    struct Case {
        const char *name;
        std::function<void(const std::string &file)> harm;
        std::function<void(frmShowPatient &)> press;
        std::string report;
    };
    const std::string damaged = "Körfel '-2147220988':\r\nPatientfil är skadad.\r\nAnledning: ";
    const std::vector<Case> cases = {
        {"details of a missing file",
         [](const std::string &file) { std::filesystem::remove(file); },
         [](frmShowPatient &view) { QTest::mouseClick(view.cmdPatInfo, Qt::LeftButton); },
         "Körfel '53':\r\n" + runtime::description(runtime::FileNotFound)},
        {"details of a damaged file",
         [](const std::string &file) { support::writeBytes(file, "<Patient"); },
         [](frmShowPatient &view) { QTest::mouseClick(view.cmdPatInfo, Qt::LeftButton); }, damaged},
        {"Ordinera on a damaged file",
         [](const std::string &file) { support::writeBytes(file, "<Patient"); },
         [](frmShowPatient &view) { QTest::mouseClick(view.cmdSend, Qt::LeftButton); }, damaged},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(test.name);
        support::storePatientFile(Pnr + ".xml", support::patientText(Pnr, "Åström", "Märta", {}));
        frmShowPatient &view = openPatient(Pnr);
        const std::string file = path("data/" + Pnr + ".xml");
        test.harm(file);
        const std::string harmed = support::readBytes(file);
        boxes.clear();
        EXPECT_THROW(test.press(view), support::ProcessEnded);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text.substr(0, test.report.size()), test.report);
        EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
        EXPECT_EQ(boxes[0].title, "Mirelo");
        EXPECT_EQ(support::readBytes(file), harmed);
        Unload<frmPatInfo>();
        Unload<frmShowPatient>();
        unloadNow();
    }
}

TEST_F(VisitDialogsTest, about_opens_by_ctrl_O_and_names_the_version_and_the_tool_it_lacks) {
    showFrame();
    const QByteArray searchPath = qgetenv("PATH");
    const std::string tools = path("tools");
    std::filesystem::create_directory(tools);
    qputenv("PATH", QByteArray::fromStdString(tools));

    std::vector<QString> shown;
    whileOpen<frmAbout>([&](frmAbout &about) {
        shown = {about.windowTitle(),   about.lblTitle->text(),       about.lblVersion->text(),
                 about.Frame1->title(), about.lblDescription->text(), about.cmdSysInfo->text()};
        // No tool on the search path: the message, and the dialog stays.
        about.cmdSysInfo->click();
        EXPECT_TRUE(about.isVisible());
        // A tool installed: it is started, and nothing is said.
        const std::string started = path("started");
        support::writeBytes(tools + "/hardinfo", "#!/bin/sh\n/usr/bin/touch '" + started + "'\n");
        std::filesystem::permissions(tools + "/hardinfo", std::filesystem::perms::owner_all);
        about.cmdSysInfo->click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(started); }, 5000));
        QTest::keyClick(&about, Qt::Key_Escape);
    });
    QTest::keyClick(Screen<frmMain>().txtSearch, Qt::Key_O, Qt::ControlModifier);
    qputenv("PATH", searchPath);
    unloadNow();

    EXPECT_EQ(shown,
              (std::vector<QString>{"Om Mirelo", "Mirelo", "Version 1.0.2", "Kontaktinformation",
                                    "Brenmark AB", "&System Info..."}));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "System Information Is Unavailable At This Time");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::None);
    EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::OK);
    EXPECT_FALSE(IsLoaded<frmAbout>());
}

// What OK does with the typed path: the boxes, whether the dialog stays, and what the file and
// the session hold afterwards.
TEST_F(VisitDialogsTest, OK_stores_a_good_path_and_reports_the_rest_in_its_own_words) {
    struct Case {
        const char *name;
        std::string typed;
        bool damagedSettings;
        std::string box; // empty: none
        platform::MsgBoxIcon icon;
        bool stays;
        std::string dataPath; // where gDataPath and the file then point
    };
    const std::string data = appDir() + "/data/";
    const std::vector<Case> cases = {
        {"empty box", "", false, "Det måste finnas en sökväg till datakatalogen. ",
         platform::MsgBoxIcon::None, true, data},
        {"new folder without separator", appDir() + "/ny", false, "", {}, false, appDir() + "/ny/"},
        {"parent missing", appDir() + "/saknas/ny", false,
         "Kontakta support och ange följande fel: 76 " +
             runtime::description(runtime::PathNotFound),
         platform::MsgBoxIcon::Stop, false, data},
        {"damaged settings", appDir() + "/annan", true,
         "Kunde inte läsa inställningsfil.\r\nAnledning: ", platform::MsgBoxIcon::Stop, false,
         data},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(test.name);
        support::writeSettingsFile({.dataPath = data});
        if (test.damagedSettings) {
            support::writeBytes(path("System/Settings.xml"), "<Settings><DataPath>");
        }
        const std::string before = settingsBytes();
        session().gDataPath = data;
        boxes.clear();

        frmSettings &settings = Screen<frmSettings>();
        EXPECT_EQ(settings.txtPath->text().toStdString(), data);
        settings.txtPath->setText(QString::fromStdString(test.typed));
        settings.OKButton->click();
        unloadNow();

        EXPECT_EQ(IsLoaded<frmSettings>(), test.stays);
        ASSERT_EQ(boxes.size(), test.box.empty() ? 0u : 1u);
        if (!test.box.empty()) {
            EXPECT_EQ(boxes[0].text.substr(0, test.box.size()), test.box);
            EXPECT_EQ(boxes[0].icon, test.icon);
            EXPECT_EQ(boxes[0].title, "Mirelo");
        }
        EXPECT_EQ(session().gDataPath, test.dataPath);
        if (test.dataPath == data) {
            EXPECT_EQ(settingsBytes(), before);
        } else {
            EXPECT_NE(settingsBytes().find("<DataPath>" + test.dataPath + "</DataPath>"),
                      std::string::npos);
            EXPECT_TRUE(std::filesystem::is_directory(test.dataPath));
        }
        Unload<frmSettings>();
        unloadNow();
    }
}

TEST_F(VisitDialogsTest, the_picker_only_fills_the_box_and_Avbryt_forgets_it) {
    const std::string data = appDir() + "/data/";
    const std::string before = settingsBytes();
    frmSettings &settings = Screen<frmSettings>();

    platform::setNextFolderChoice(std::nullopt);
    settings.cmdBrowse->click();
    EXPECT_EQ(settings.txtPath->text().toStdString(), data);

    platform::setNextFolderChoice(appDir() + "/saknas/vald");
    settings.cmdBrowse->click();
    EXPECT_EQ(settings.txtPath->text().toStdString(), appDir() + "/saknas/vald/");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Välj korrekt sökväg till en katalog. " +
                                 runtime::description(runtime::PathNotFound));
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::None);

    platform::setNextFolderChoice(appDir() + "/vald");
    settings.cmdBrowse->click();
    EXPECT_EQ(settings.txtPath->text().toStdString(), appDir() + "/vald/");
    EXPECT_TRUE(std::filesystem::is_directory(appDir() + "/vald"));
    EXPECT_EQ(boxes.size(), 1u);

    QTest::keyClick(&settings, Qt::Key_Escape);
    unloadNow();
    EXPECT_FALSE(IsLoaded<frmSettings>());
    EXPECT_EQ(session().gDataPath, data);
    EXPECT_EQ(settingsBytes(), before);
    EXPECT_TRUE(std::filesystem::is_directory(appDir() + "/vald"));
}

// Ctrl+I from the search screen; the new folder counts at once for the search and the inbox,
// without refreshing the list already shown.
TEST_F(VisitDialogsTest, a_folder_chosen_by_ctrl_I_serves_the_next_search_and_intake_at_once) {
    support::storePatientFile(Pnr + ".xml", support::patientText(Pnr, "Åström", "Märta", {}));
    mainApp &frame = showFrame();
    frmMain &search = Screen<frmMain>();
    QTest::keyClicks(search.txtSearch, "19");
    QTest::keyClick(search.txtSearch, Qt::Key_Return);
    ASSERT_EQ(search.List1->count(), 1);

    const std::string other = appDir() + "/mottagning";
    whileOpen<frmSettings>([&](frmSettings &settings) {
        settings.txtPath->setText(QString::fromStdString(other));
        QTest::keyClick(settings.txtPath, Qt::Key_Return);
    });
    QTest::keyClick(search.txtSearch, Qt::Key_I, Qt::ControlModifier);
    unloadNow();
    EXPECT_EQ(session().gDataPath, other + "/");
    EXPECT_EQ(search.List1->count(), 1);

    support::PrescriptionMessage message;
    message.pnr = "202002022222";
    support::writePrescriptionMessage(path("in/m.xml"), message);
    for (int tick = 0; tick < 10; ++tick) {
        frame.Timer1_Timer();
    }
    EXPECT_TRUE(std::filesystem::exists(other + "/202002022222.xml"));
    search.txtSearch->clear();
    QTest::keyClicks(search.txtSearch, "20");
    QTest::keyClick(search.txtSearch, Qt::Key_Return);
    ASSERT_EQ(search.List1->count(), 1);
    EXPECT_EQ(search.List1->item(0)->text(), "202002022222 Åström");
    EXPECT_TRUE(boxes.empty());
}

// "Välj ny patient" drops the view: the next patient starts from the view's design.
TEST_F(VisitDialogsTest, a_new_patient_gets_a_fresh_view_with_past_products_shown) {
    std::vector<support::ProductFields> many(20);
    for (size_t i = 0; i < many.size(); ++i) {
        many[i].id = "S" + std::to_string(i) + "_1";
        many[i].regNr = std::to_string(300000 + i);
    }
    support::storePatientFile(Pnr + ".xml", support::patientText(Pnr, "Åström", "Märta", many));
    support::storePatientFile("202002022222.xml",
                              support::patientText("202002022222", "Berg", "Ola", {many[0]}));
    frmShowPatient &first = openPatient(Pnr);
    EXPECT_EQ(first.FlexGrid->Rows(), 21);
    first.chkMode->click();
    ASSERT_FALSE(first.chkMode->isChecked());

    // Past products hidden, the top one taken out: the note is asked of it, though its row went.
    std::string noteOn;
    whileOpen<frmMedicalNote>([&noteOn](frmMedicalNote &note) {
        noteOn = note.ID;
        note.cmdSave->click();
    });
    const QRect tickBox = first.FlexGrid->visualItemRect(first.FlexGrid->item(1, 2));
    QTest::mouseClick(first.FlexGrid->viewport(), Qt::LeftButton, {}, tickBox.center());
    EXPECT_EQ(noteOn, "S0_1");
    EXPECT_EQ(first.FlexGrid->TextMatrix(1, 7), "S1_1");

    QTest::mouseClick(first.cmdNyPatient, Qt::LeftButton);
    unloadNow();
    EXPECT_FALSE(IsLoaded<frmShowPatient>());
    EXPECT_TRUE(Screen<frmMain>().isVisible());
    EXPECT_EQ(Screen<mainApp>().focusWidget(), Screen<frmMain>().txtSearch);

    frmShowPatient &next = openPatient("202002022222");
    EXPECT_TRUE(next.chkMode->isChecked());
    EXPECT_EQ(next.FlexGrid->Rows(), 14);
    EXPECT_TRUE(boxes.empty());
}

} // namespace

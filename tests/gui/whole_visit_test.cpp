#include "core/application_context.h"
#include "korvalo_process.h"
#include "patient_file_builder.h"
#include "platform/gui/flex_grid.h"
#include "platform/xml_document.h"
#include "screen_test.h"
#include "settings_file_builder.h"
#include "stored_patient_reading.h"
#include "web_client.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

const std::string Pnr = "191212121212";
const std::string Now = "2026-03-15 14:05:09";

// A browser that takes the hand-over page's form to the service as the page would post it,
// and keeps the page the service answers with.
class PostingBrowser : public platform::Browser {
  public:
    explicit PostingBrowser(std::string &answer) : answer_(answer) {}
    void Navigate(const std::string &url) override { url_ = url; }
    int ReadyState() override { return platform::ReadyStateComplete; }
    void Sleep(int) override {}
    void SetFirstFormField(const std::string &field, const std::string &value) override {
        fields_.emplace_back(field, value);
    }
    void SubmitFirstForm() override { answer_ = support::webPostForm(url_, fields_).body; }
    void SetLoginFormField(const std::string &, const std::string &) override {}
    void SubmitLoginForm() override {}
    void ShowMaximized() override {}
    void SetVisible() override {}
    void BringToFront() override {}

  private:
    std::string &answer_;
    std::string url_;
    std::vector<std::pair<std::string, std::string>> fields_;
};

class WholeVisitTest : public support::ScreenTest {
  protected:
    // A modal dialog runs its own loop: what the user does in it is queued before it opens.
    template <typename Dialog> static void whileOpen(std::function<void(Dialog &)> act) {
        QTimer::singleShot(0, [act] {
            ASSERT_TRUE(IsLoaded<Dialog>() && Screen<Dialog>().isVisible());
            act(Screen<Dialog>());
        });
    }

    // Keys reach the frame's screens once the frame is the active window again, as it is when
    // a dialog over it has closed.
    static void activateFrame() {
        mainApp &frame = Screen<mainApp>();
        frame.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    }

    static void changeDataFolder(frmShowPatient &view, const std::string &folder) {
        activateFrame();
        whileOpen<frmSettings>([folder](frmSettings &settings) {
            settings.txtPath->setText(QString::fromStdString(folder));
            QTest::keyClick(settings.OKButton, Qt::Key_Space);
        });
        QTest::keyClick(view.FlexGrid, Qt::Key_I, Qt::ControlModifier);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

TEST_F(WholeVisitTest, a_visit_runs_through_the_screens_and_leaves_exactly_its_marks) {
    support::ensureGuiApplication();
    support::KorvaloProcess korvalo({"--inbox", path("in")});
    support::writeSettingsFile({.dataPath = appDir() + "/data/", .server = korvalo.baseUrl()});
    std::string servicePage;
    platform::setBrowserFactory([&] { return std::make_unique<PostingBrowser>(servicePage); });
    support::ProductFields alvedon;
    alvedon.id = "S2_1";
    support::ProductFields waran;
    waran.id = "S1_1";
    waran.regNr = "200002";
    waran.productName = "Waran";
    waran.atcCode = "B01AA03";
    const std::string original = support::patientText(Pnr, "Åström", "Märta", {alvedon, waran});
    support::storePatientFile(Pnr + ".xml", original);

    // Log in and open the patient from the search list.
    frmSplash &splash = Screen<frmSplash>();
    QTest::keyClicks(splash.txtUsername, "demo");
    QTest::keyClicks(splash.txtPassword, "demo123");
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);
    ASSERT_TRUE(IsLoaded<mainApp>());
    mainApp &frame = Screen<mainApp>();
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    const std::string signature = session().gSignature;
    frmMain &search = Screen<frmMain>();
    QTest::keyClicks(search.txtSearch, "1912");
    QTest::keyClick(search.txtSearch, Qt::Key_Return);
    ASSERT_EQ(search.List1->count(), 1);
    QTest::keyClick(search.List1, Qt::Key_Return);
    frmShowPatient &view = Screen<frmShowPatient>();
    ASSERT_TRUE(view.isVisible());
    ASSERT_EQ(view.FlexGrid->TextMatrix(1, 7), "S2_1");

    // Take Alvedon out: the note dialog asks why; a warning is given there, with its reason.
    whileOpen<frmMedicalNote>([](frmMedicalNote &note) {
        note.txtExtendedMedicalInfo->insertPlainText(QStringLiteral("Yrsel"));
        whileOpen<frmAllergicExtendedInfo>([](frmAllergicExtendedInfo &reason) {
            reason.txtExtendedMedicalInfo->insertPlainText(QStringLiteral("Utslag"));
            reason.cmdSave->click();
        });
        note.chkAllergic->click();
        note.cmdSave->click();
    });
    const QRect tickBox = view.FlexGrid->visualItemRect(view.FlexGrid->item(1, 2));
    QTest::mouseClick(view.FlexGrid->viewport(), Qt::LeftButton, {}, tickBox.center());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_EQ(view.FlexGrid->TextMatrix(view.FlexGrid->Row(), 7), "S2_1");

    // Its history, beside the view, from the panel of the row selected again.
    const int takenOut = view.FlexGrid->Row();
    const QRect productCell = view.FlexGrid->visualItemRect(view.FlexGrid->item(takenOut, 3));
    QTest::mouseClick(view.FlexGrid->viewport(), Qt::LeftButton, {}, productCell.center());
    ASSERT_TRUE(view.cmdAllergicHistory->isVisible());
    QTest::mouseClick(view.cmdAllergicHistory, Qt::LeftButton);
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    EXPECT_TRUE(history.isVisible());
    EXPECT_EQ(history.FlexGrid->TextMatrix(1, 4), "Utslag");
    history.cmdBack->click();

    // The details, then another data folder and back again.
    QString detailsName;
    whileOpen<frmPatInfo>([&detailsName](frmPatInfo &details) {
        detailsName = details.txtName->text();
        details.cmdOK->click();
    });
    QTest::mouseClick(view.cmdPatInfo, Qt::LeftButton);
    EXPECT_EQ(detailsName, "Märta Åström");
    changeDataFolder(view, appDir() + "/reserv");
    EXPECT_EQ(session().gDataPath, appDir() + "/reserv/");
    changeDataFolder(view, appDir() + "/data/");
    EXPECT_EQ(session().gDataPath, appDir() + "/data/");

    // Ordinera: the service shows the patient with the current medication, Alvedon no longer
    // among it; the view stays as it is behind the browser.
    activateFrame();
    QTest::keyClick(view.FlexGrid, Qt::Key_Return);
    EXPECT_NE(servicePage.find("<td>Märta Åström</td>"), std::string::npos);
    const size_t table = servicePage.find("<table id=\"medicinering\">");
    ASSERT_NE(table, std::string::npos);
    const std::string medication =
        servicePage.substr(table, servicePage.find("</table>", table) - table);
    EXPECT_NE(medication.find("<td>Waran</td>"), std::string::npos);
    EXPECT_EQ(medication.find("Alvedon"), std::string::npos);
    EXPECT_NE(servicePage.find("name=\"Prescribe\""), std::string::npos);
    EXPECT_TRUE(view.isVisible());

    QTest::mouseClick(view.cmdNyPatient, Qt::LeftButton);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(IsLoaded<frmShowPatient>());
    EXPECT_TRUE(search.isVisible());
    EXPECT_TRUE(boxes.empty());

    // The file: what the builder wrote, with the visit's marks on Alvedon and its history.
    platform::XmlDocument expected;
    expected.loadXML(original);
    const auto set = [&expected](const std::string &id, const std::string &name,
                                 const std::string &value) {
        expected.selectSingleNode("//Product[ID = \"" + id + "\"]/" + name).setText(value);
    };
    for (const auto &[name, value] : support::Fields{{"Checked", "0"},
                                                     {"TakenOutBy", signature},
                                                     {"TakenOutTimestamp", Now},
                                                     {"ExtendedMedicalInfo", "Yrsel"},
                                                     {"ExtendedMedicalInfoBy", signature},
                                                     {"ExtendedMedicalInfoTimestamp", Now},
                                                     {"Allergic", "1"},
                                                     {"AllergicHistory", "1"}}) {
        set("S2_1", name, value);
    }
    const platform::XmlDocument stored = support::readStoredPatient(path("data/" + Pnr + ".xml"));
    EXPECT_EQ(support::childFields(stored.selectSingleNode("/Patient/PatientData")),
              support::childFields(expected.selectSingleNode("/Patient/PatientData")));
    for (const char *id : {"S2_1", "S1_1"}) {
        SCOPED_TRACE(id);
        const std::string product = std::string("//Product[ID = \"") + id + "\"]";
        EXPECT_EQ(support::childFields(stored.selectSingleNode(product)),
                  support::childFields(expected.selectSingleNode(product)));
    }
    EXPECT_EQ(stored.selectNodes("//Product").size(), 2u);
    const auto records = stored.selectNodes("/Patient/History/AllergicHistory");
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(support::childFields(records[0]), (support::Fields{
                                                    {"RegNr", "100001"},
                                                    {"AllergicStatusHistory", "1"},
                                                    {"AllergicInfoHistory", "Utslag"},
                                                    {"AllergicInfoByHistory", signature},
                                                    {"AllergicInfoTimestampHistory", Now},
                                                }));
}

} // namespace

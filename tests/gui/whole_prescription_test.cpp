#include "browser_processes.h"
#include "core/application_context.h"
#include "korvalo_process.h"
#include "patient_file_builder.h"
#include "platform/file_system.h"
#include "platform/gui/flex_grid.h"
#include "screen_test.h"
#include "settings_file_builder.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

class WholePrescriptionTest : public support::ScreenTest {
  protected:
    // Mirelo's process never loads the browser engine: only the browser's own process does.
    static bool browserEngineMapped() {
        return support::readBytes("/proc/self/maps").find("WebEngine") != std::string::npos;
    }

    // Waits, a bounded number of times, for something the service or the browser does.
    template <typename Condition> static bool eventually(Condition condition) {
        for (int attempt = 0; attempt < 300; ++attempt) {
            if (condition()) {
                return true;
            }
            QTest::qWait(50);
        }
        return false;
    }

    bool inboxHoldsAMessage() {
        for (const auto &file : platform::GetFolderFiles(path("in"))) {
            if (file.Name.ends_with(".xml")) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(WholePrescriptionTest, a_product_prescribed_on_the_service_page_stands_first_and_ticked) {
    support::KorvaloProcess korvalo({"--inbox", path("in")});
    support::SettingsFields settings;
    settings.dataPath = appDir() + "/data/";
    settings.server = korvalo.baseUrl();
    support::writeSettingsFile(settings);
    support::ProductFields earlier;
    earlier.id = "S1_1";
    earlier.regNr = "19920312"; // Alvedon, as the service's catalogue has it
    support::storePatientFile("191212121212.xml",
                              support::patientText("191212121212", "Åström", "Märta", {earlier}));

    frmSplash &splash = Screen<frmSplash>();
    QTest::keyClicks(splash.txtUsername, "demo");
    QTest::keyClicks(splash.txtPassword, "demo123");
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);
    ASSERT_TRUE(IsLoaded<mainApp>());
    EXPECT_FALSE(browserEngineMapped());
    mainApp &frame = Screen<mainApp>();
    QTest::keyClicks(Screen<frmMain>().txtSearch, "191212121212");
    QTest::keyClick(Screen<frmMain>().txtSearch, Qt::Key_Return);
    frmShowPatient &view = Screen<frmShowPatient>();
    ASSERT_TRUE(view.isVisible());

    support::BrowserProcesses browsers;
    view.cmdSend->click();
    ASSERT_EQ(browsers.started(), 1u);
    EXPECT_TRUE(browsers.status(0).value("visible").toBool());
    ASSERT_TRUE(
        eventually([&] { return browsers.script(0, "!!document.forms['Prescribe']").toBool(); }));
    browsers.script(0, "document.querySelector('input[name=vnr][value=\"146712\"]').checked = true;"
                       "document.forms['Prescribe'].submit(); true");
    ASSERT_TRUE(eventually([&] { return inboxHoldsAMessage(); }));

    for (int tick = 0; tick < 10; ++tick) {
        frame.Timer1_Timer();
    }
    EXPECT_FALSE(inboxHoldsAMessage());
    platform::FlexGrid *grid = view.FlexGrid;
    EXPECT_EQ(grid->TextMatrix(1, 9), "19920312");
    EXPECT_NE(grid->TextMatrix(1, 7), "S1_1");
    EXPECT_EQ(grid->CellPictureAt(1, 2), 1);
    EXPECT_EQ(grid->TextMatrix(2, 7), "S1_1");
    EXPECT_EQ(grid->CellPictureAt(2, 2), 2);
    EXPECT_TRUE(boxes.empty());

    // The password went to the page inside the handover document and nowhere else: no file
    // of the installation, nothing the service printed, and no profile left by the browser.
    korvalo.stop();
    EXPECT_EQ(korvalo.output().find("demo123"), std::string::npos);
    EXPECT_TRUE(support::filesHolding(appDir(), "demo123").empty());
    EXPECT_TRUE(browsers.status(0).value("offTheRecord").toBool());
    EXPECT_FALSE(browserEngineMapped());
}

} // namespace

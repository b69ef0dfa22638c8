#include "screen_test.h"

#include "platform/gui/mirelo_application.h"

namespace mirelo::testing {

void ensureGuiApplication() {
    if (QApplication::instance() == nullptr) {
        // The browser processes the tests start inherit this, and their sandbox refuses to run
        // as root, which the test machines are.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
        static int argc = 1;
        static char name[] = "mirelo-tests";
        static char *argv[] = {name, nullptr};
        new platform::MireloApplication(argc, argv);
    }
}

void ScreenTest::SetUp() {
    ApplicationTest::SetUp();
    ensureGuiApplication();
}

void ScreenTest::TearDown() {
    unloadAll<frmAllergicExtendedInfo, frmMedicalNote, frmAllergicHistory, frmExtendedInfo,
              frmPatInfo, frmAbout, frmSettings, frmShowPatient, frmMain, frmSplash, mainApp>();
    unloadNow();
    ApplicationTest::TearDown();
}

mainApp &ScreenTest::showFrame() {
    mainApp &frame = Screen<mainApp>();
    frame.show();
    frame.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
    return frame;
}

void ScreenTest::search(const QString &text) {
    frmMain &screen = Screen<frmMain>();
    screen.txtSearch->clear();
    QTest::keyClicks(screen.txtSearch, text);
    QTest::keyClick(screen.txtSearch, Qt::Key_Return);
}

frmShowPatient &ScreenTest::openPatient(const std::string &pnr) {
    showFrame();
    search(QString::fromStdString(pnr));
    return Screen<frmShowPatient>();
}

void ScreenTest::logIn(const QString &username, const QString &password) {
    frmSplash &splash = Screen<frmSplash>();
    QTest::keyClicks(splash.txtUsername, username);
    QTest::keyClicks(splash.txtPassword, password);
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);
}

void ScreenTest::clickCell(platform::FlexGrid *grid, int row, int col) {
    const QRect cell = grid->visualItemRect(grid->item(row, col));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
}

void ScreenTest::unloadNow() {
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace mirelo::testing

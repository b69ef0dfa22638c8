#pragma once

#include "patient_file_builder.h"
#include "platform/browser.h"
#include "platform/gui/flex_grid.h"
#include "prescription_message_builder.h"
#include "screens/frmAbout.h"
#include "screens/frmAllergicExtendedInfo.h"
#include "screens/frmAllergicHistory.h"
#include "screens/frmExtendedInfo.h"
#include "screens/frmMain.h"
#include "screens/frmMedicalNote.h"
#include "screens/frmPatInfo.h"
#include "screens/frmSettings.h"
#include "screens/frmShowPatient.h"
#include "screens/frmSplash.h"
#include "screens/mainApp.h"
#include "screens/screen_instance.h"
#include "settings_file_builder.h"
#include "test_environment.h"

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
#include <functional>

namespace mirelo::testing {

using namespace mirelo::screens;

// Real widgets need an application object, made once per process: the program's own, drawn off
// screen, so that a failure no handler catches ends the process with the platform's report.
void ensureGuiApplication();

// A test of the screens: real widgets off screen, and after the test every screen it opened is
// gone, so the next test starts from nothing. What the user does is done by keys and clicks.
class ScreenTest : public ApplicationTest {
  protected:
    void SetUp() override;
    void TearDown() override;

    // The frame shown and active, as the window system leaves it for the keys to reach it.
    static mainApp &showFrame();
    // Types the text into the search box of the patient search and presses Enter.
    static void search(const QString &text);
    // The frame shown, and the patient opened by the whole number in the search box.
    static frmShowPatient &openPatient(const std::string &pnr);
    // The user name and password typed into the login screen, and Enter.
    static void logIn(const QString &username, const QString &password);
    static void clickCell(platform::FlexGrid *grid, int row, int col);
    // Screens unloaded by the last event are gone once the deferred deletions have run.
    static void unloadNow();

    template <typename... Screens> static void unloadAll() { (Unload<Screens>(), ...); }
    // A modal dialog runs its own loop: what the user does in it is queued before it opens.
    template <typename Dialog> static void whileOpen(std::function<void(Dialog &)> act) {
        QTimer::singleShot(0, [act] {
            ASSERT_TRUE(IsLoaded<Dialog>() && Screen<Dialog>().isVisible());
            act(Screen<Dialog>());
        });
    }
};

} // namespace mirelo::testing

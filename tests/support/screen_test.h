#pragma once

#include "gui_application.h"
#include "platform/browser.h"
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
#include "test_environment.h"

#include <QApplication>

namespace mirelo::testing {

// A test of the screens: real widgets off screen, and after the test every screen it opened is
// gone and the hand-offs go to the real browser again, so the next test starts from nothing.
class ScreenTest : public ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        ensureGuiApplication();
    }
    void TearDown() override {
        using namespace mirelo::screens;
        Unload<frmAllergicExtendedInfo>();
        Unload<frmMedicalNote>();
        Unload<frmAllergicHistory>();
        Unload<frmExtendedInfo>();
        Unload<frmPatInfo>();
        Unload<frmAbout>();
        Unload<frmSettings>();
        Unload<frmShowPatient>();
        Unload<frmMain>();
        Unload<frmSplash>();
        Unload<mainApp>();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        platform::setBrowserFactory({});
        ApplicationTest::TearDown();
    }
};

} // namespace mirelo::testing

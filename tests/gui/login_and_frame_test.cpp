#include "core/application_context.h"
#include "korvalo_process.h"
#include "platform/file_system.h"
#include "platform/gui/mirelo_application.h"
#include "prescription_message_builder.h"
#include "screen_test.h"
#include "settings_file_builder.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

class LoginAndFrameTest : public support::ScreenTest {
  protected:
    void pointSettingsAt(const std::string &server) {
        support::SettingsFields settings;
        settings.dataPath = appDir() + "/data/";
        settings.server = server;
        support::writeSettingsFile(settings);
    }

    frmSplash &typeLogin(const QString &username, const QString &password) {
        frmSplash &splash = Screen<frmSplash>();
        splash.show();
        QTest::keyClicks(splash.txtUsername, username);
        QTest::keyClicks(splash.txtPassword, password);
        return splash;
    }
};

TEST_F(LoginAndFrameTest, first_start_creates_the_settings_and_lays_out_the_login_screen) {
    frmSplash &splash = Screen<frmSplash>();
    EXPECT_TRUE(platform::FileExists(SettingsFilePath()));
    EXPECT_EQ(splash.windowTitle(), "Mirelo Inloggning");
    EXPECT_EQ(splash.txtPassword->echoMode(), QLineEdit::Password);
    EXPECT_EQ(splash.Submit->text(), "Logga in");
    EXPECT_EQ(splash.Command1->text(), "Avsluta");
    EXPECT_EQ(splash.lblSupportInfo->text().toStdString(),
              "Telefon: 08-123 456 70 | Fax: 08-123 456 79\r\nE-post: support@mirelo.example");
    EXPECT_EQ(splash.findChild<QLineEdit *>("txtUsername"), splash.txtUsername);
    EXPECT_EQ(splash.txtUsername->geometry(), QRect(88, 120, 129, 19));
    EXPECT_EQ(splash.size(), QSize(435, 324));
}

TEST_F(LoginAndFrameTest, a_saved_user_name_stands_in_the_box_and_the_password_box_comes_first) {
    support::SettingsFields settings;
    settings.username = "abc";
    settings.saveUsername = "1";
    settings.dataPath = appDir() + "/data/";
    support::writeSettingsFile(settings);
    frmSplash &splash = Screen<frmSplash>();
    splash.show();
    EXPECT_EQ(splash.txtUsername->text(), "abc");
    EXPECT_TRUE(splash.chkSaveUsername->isChecked());
    EXPECT_EQ(splash.txtPassword->nextInFocusChain(), splash.Submit);
    EXPECT_EQ(QApplication::focusWidget() == nullptr ||
                  QApplication::focusWidget() == splash.txtPassword,
              true);
}

TEST_F(LoginAndFrameTest, a_damaged_settings_file_ends_the_process_before_the_screen_shows) {
    std::filesystem::create_directory(path("System"));
    support::writeBytes(path("System/Settings.xml"), "<Settings><Username>");
    EXPECT_THROW(Screen<frmSplash>(), support::ProcessEnded);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text.rfind("Inställningsfilen är skadad.\r\nAnledning: ", 0), 0u);
}

TEST_F(LoginAndFrameTest, enter_logs_in_opens_the_frame_and_the_tick_takes_in_messages) {
    support::KorvaloProcess korvalo;
    pointSettingsAt(korvalo.baseUrl());
    frmSplash &splash = typeLogin("demo", "demo123");
    QTest::keyClick(splash.txtPassword, Qt::Key_Return);

    ASSERT_TRUE(IsLoaded<mainApp>());
    EXPECT_FALSE(IsLoaded<frmSplash>());
    mainApp &frame = Screen<mainApp>();
    EXPECT_TRUE(frame.isVisible());
    EXPECT_EQ(frame.windowTitle(), "Mirelo");
    EXPECT_TRUE(Screen<frmMain>().isVisible());
    EXPECT_EQ(Screen<frmMain>().windowTitle(), "Tavmor Mirelo");
    EXPECT_EQ(Screen<frmMain>().txtLoggedIn->text().toStdString(), session().gSignature);
    EXPECT_FALSE(session().gSignature.empty());
    EXPECT_EQ(frame.Timer1->interval(), 1000);
    EXPECT_TRUE(frame.Timer1->isActive());
    EXPECT_FALSE(frame.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_TRUE(boxes.empty());

    support::PrescriptionMessage message;
    message.items.push_back({});
    support::writePrescriptionMessage(path("in/recept.xml"), message);
    for (int tick = 0; tick < 10; ++tick) {
        frame.Timer1_Timer();
    }
    EXPECT_TRUE(platform::FileExists(path("data/191212121212.xml")));
    EXPECT_FALSE(platform::FileExists(path("in/recept.xml")));
}

TEST_F(LoginAndFrameTest, a_refused_login_shows_its_reason_and_keeps_the_boxes) {
    support::KorvaloProcess korvalo;
    pointSettingsAt(korvalo.baseUrl());
    frmSplash &splash = typeLogin("demo", "fel");
    QTest::mouseClick(splash.Submit, Qt::LeftButton);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_FALSE(IsLoaded<mainApp>());
    EXPECT_TRUE(IsLoaded<frmSplash>());
    EXPECT_EQ(splash.txtUsername->text(), "demo");
    EXPECT_EQ(splash.txtPassword->text(), "fel");
}

TEST_F(LoginAndFrameTest, an_unreachable_server_can_be_tried_again) {
    pointSettingsAt("http://127.0.0.1:9");
    frmSplash &splash = typeLogin("demo", "demo123");
    QTest::keyClick(splash.txtUsername, Qt::Key_Enter);
    QTest::keyClick(splash.txtUsername, Qt::Key_Enter);
    ASSERT_EQ(boxes.size(), 2u);
    for (const auto &box : boxes) {
        EXPECT_EQ(box.text, "Kunde inte ansluta till Mirelos loginserver. Kontrollera din "
                            "internetförbindelse.");
        EXPECT_EQ(box.icon, platform::MsgBoxIcon::Stop);
    }
    EXPECT_FALSE(processEnded);
    EXPECT_TRUE(IsLoaded<frmSplash>());
}

TEST_F(LoginAndFrameTest, Avsluta_ends_the_process_without_a_question) {
    frmSplash &splash = Screen<frmSplash>();
    EXPECT_THROW(splash.Command1_Click(), support::ProcessEnded);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(LoginAndFrameTest, closing_the_frame_asks_and_No_keeps_frame_timer_and_tick_count) {
    mainApp &frame = Screen<mainApp>();
    frame.show();
    EXPECT_FALSE(IsLoaded<frmSplash>());
    frame.Timer1_Timer();
    frame.Timer1_Timer();

    nextAnswers.push_back(platform::MsgBoxResult::No);
    frame.close();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Vill du verkligen avsluta Mirelo?");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Warning);
    EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::YesNo);
    EXPECT_TRUE(frame.isVisible());
    EXPECT_TRUE(frame.Timer1->isActive());
    EXPECT_EQ(frame.tickCount(), 2);

    // The menu's Avsluta asks the same question.
    nextAnswers.push_back(platform::MsgBoxResult::No);
    frame.Exit->trigger();
    EXPECT_EQ(boxes.size(), 2u);
    EXPECT_EQ(frame.Exit->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_A));
    EXPECT_EQ(frame.Settings->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_I));
    EXPECT_EQ(frame.About->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_O));

    // While a hand-off waits for its page the ticks pass without effect.
    {
        const platform::BrowserWait waiting;
        frame.Timer1_Timer();
    }
    EXPECT_EQ(frame.tickCount(), 2);

    EXPECT_FALSE(frame.MDIForm_QueryUnload());
    EXPECT_THROW(frame.MDIForm_Unload(), support::ProcessEnded);
}

TEST_F(LoginAndFrameTest, a_failure_no_handler_caught_is_reported_and_ends_the_process) {
    EXPECT_THROW(platform::ReportUnhandledFailure(53, "Filen hittades inte"),
                 support::ProcessEnded);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Körfel '53':\r\nFilen hittades inte");
    EXPECT_EQ(boxes[0].title, "Mirelo");
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
}

} // namespace

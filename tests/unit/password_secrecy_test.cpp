#include "core/application_context.h"
#include "core/code_page.h"
#include "exchange/login_exchange.h"
#include "korvalo_process.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

const std::string Password = "Pw-hemligt-91";
const std::string WrongPassword = "Fel-lösen-37";

using PasswordSecrecyTest = support::ApplicationTest;

TEST_F(PasswordSecrecyTest, the_password_is_in_no_file_and_in_nothing_printed) {
    // The service's users file is the one place the test itself puts the password.
    const std::string usersFile = path("korvalo-users.xml");
    support::writeBytes(usersFile, "<Users><User><Username>karin</Username><Password>" + Password +
                                       "</Password><Signature>Dr. K</Signature><Message><Status>"
                                       "0</Status></Message></User><User><Username>trasig"
                                       "</Username><Password>" +
                                       Password +
                                       "</Password><Answer>error</Answer></User></Users>");
    support::KorvaloProcess korvalo({"--users", usersFile});
    support::SettingsFields settings;
    settings.dataPath = appDir() + "/data/";
    settings.server = korvalo.baseUrl();
    support::writeSettingsFile(settings);

    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    Login({"karin", WrongPassword, true}, [] { FAIL() << "a wrong password let the user in"; });
    int opened = 0;
    Login({"karin", Password, true}, [&] { ++opened; });
    EXPECT_GT(opened, 0);
    EXPECT_THROW(Login({"trasig", Password, true}, [] {}), support::ProcessEnded);
    ASSERT_TRUE(korvalo.stop());
    Login({"karin", Password, true}, [] { FAIL() << "the server was to be unreachable"; });
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();

    EXPECT_EQ(session().gPassword, Password);
    EXPECT_NE(korvalo.output().find("POST /Public/Mirelo/Login.aspx"), std::string::npos);
    // The settings file is ISO-8859-1, so the Swedish letter is looked for in that form too.
    for (const std::string &secret : {Password, WrongPassword, Utf8ToCodePage(WrongPassword)}) {
        EXPECT_EQ(printed.find(secret), std::string::npos) << printed;
        EXPECT_EQ(korvalo.output().find(secret), std::string::npos) << korvalo.output();
        for (const platform::MsgBoxRequest &box : boxes) {
            EXPECT_EQ(box.text.find(secret), std::string::npos) << box.text;
        }
        EXPECT_TRUE(support::filesHolding(appDir(), secret, usersFile).empty());
    }
    // The user name was stored, so the scan did look at the file the login writes.
    EXPECT_NE(support::readBytes(SettingsFilePath()).find("<Username>karin</Username>"),
              std::string::npos);
}

} // namespace

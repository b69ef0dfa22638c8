#include "core/application_context.h"
#include "core/code_page.h"
#include "core/mirelo_error.h"
#include "exchange/login_exchange.h"
#include "intake/inbox_scan.h"
#include "korvalo_process.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

const std::string Password = "Pw-hemligt-91";
const std::string WrongPassword = "Fel-lösen-37";

using PasswordSecrecyTest = support::ApplicationTest;

// Files of this process may grow to `bytes` at most while it lives; a write past that fails
// with EFBIG instead of ending the process.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        previousSignal_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit lowered{bytes, previous_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousSignal_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

  private:
    rlimit previous_{};
    void (*previousSignal_)(int) = SIG_DFL;
};

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

    // Writes that fail with the password in memory: a settings file the next login may not
    // rewrite, and a patient file that the file size limit cuts short at intake.
    std::filesystem::permissions(SettingsFilePath(), std::filesystem::perms::all,
                                 std::filesystem::perm_options::remove);
    std::filesystem::permissions(SettingsFilePath(), std::filesystem::perms::owner_read);
    EXPECT_THROW(Login({"karin", WrongPassword, true}, [] {}), support::ProcessEnded);
    std::vector<support::ProductFields> products(100);
    support::storePatientFile("P1.xml", support::patientText("P1", "Ek", "Eva", products));
    support::PrescriptionMessage message;
    message.pnr = "P1";
    message.items = {support::MessageItem{}};
    support::writePrescriptionMessage(path("in/m.xml"), message);
    {
        const FileSizeLimit limit(support::readBytes(path("data/P1.xml")).size() / 2);
        InboxTimer timer;
        EXPECT_THROW(
            for (int tick = 0; tick < 10;
                 ++tick) { timer.Timer1_Timer([] { return false; }, [] {}); },
            support::ProcessEnded);
    }
    const std::string denied = runtime::description(runtime::PermissionDenied);
    ASSERT_GE(boxes.size(), 2u);
    EXPECT_EQ(boxes[boxes.size() - 2].text, "Kontakta support och ange följande fel: " +
                                                std::to_string(runtime::PermissionDenied) + " " +
                                                denied);
    EXPECT_EQ(boxes.back().text, denied + " (File too large)");

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

#include "build_config.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/settings_store.h"
#include "platform/xml_document.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

class SettingsStoreTest : public support::ApplicationTest {
  protected:
    // The settings file as the program would read it.
    platform::XmlDocument storedSettings() {
        platform::XmlDocument document;
        document.load(SettingsFilePath());
        EXPECT_EQ(document.parseError().errorCode, 0) << document.parseError().reason;
        return document;
    }
    std::string stored(const std::string &query) {
        const platform::XmlDocument document = storedSettings();
        const platform::XmlNode node = document.selectSingleNode(query);
        return node ? node.text() : "<absent>";
    }
    void writeDamagedSettings() {
        std::filesystem::create_directories(SystemFolder());
        support::writeBytes(SettingsFilePath(), "<Settings><Username>");
    }
};

const std::string DamagedPrefix = "Inställningsfilen är skadad.\r\nAnledning: ";

TEST_F(SettingsStoreTest, CheckSettingsFile_first_start_creates_System_and_the_six_defaults) {
    ASSERT_FALSE(std::filesystem::exists(appDir() + "/System"));
    LoginScreenState screen;
    CheckSettingsFile(screen);

    const std::string bytes = support::readBytes(appDir() + "/System/Settings.xml");
    EXPECT_EQ(bytes.rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u) << bytes;
    platform::XmlDocument document = storedSettings();
    std::vector<std::string> names;
    for (const platform::XmlNode &child : document.selectNodes("/Settings/*")) {
        names.push_back(child.nodeName());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Username", "SaveUsername", "DataPath", "Server",
                                               "LoginUrl", "InitXmlUrl"}));
    EXPECT_EQ(stored("//Username"), "");
    EXPECT_EQ(stored("//SaveUsername"), "0");
    EXPECT_EQ(stored("//DataPath"), appDir() + "/data/");
    EXPECT_EQ(stored("//Server"), build::defaultServer);
    EXPECT_EQ(stored("//LoginUrl"), "/Public/Mirelo/Login.aspx");
    EXPECT_EQ(stored("//InitXmlUrl"), "/Public/Mirelo/InitXML.aspx");

    // The screen stays as designed, and a second start reads the file instead of replacing it.
    EXPECT_EQ(screen.txtUsername, "");
    EXPECT_FALSE(screen.chkSaveUsername);
    EXPECT_EQ(screen.txtUsernameTabIndex, 2);
    EXPECT_EQ(screen.txtPasswordTabIndex, 3);
    support::writeSettingsFile({.username = "Åsa", .saveUsername = "1", .dataPath = "/x/"});
    CheckSettingsFile(screen);
    EXPECT_EQ(screen.txtUsername, "Åsa");
}

TEST_F(SettingsStoreTest, ReadSavedUsername_fills_the_screen_only_when_SaveUsername_is_1) {
    support::writeSettingsFile({.username = "abc", .saveUsername = " 1 ", .dataPath = "/x/"});
    LoginScreenState saved;
    ReadSavedUsername(saved);
    EXPECT_EQ(saved.txtUsername, "abc");
    EXPECT_TRUE(saved.chkSaveUsername);
    EXPECT_EQ(saved.txtPasswordTabIndex, 0);
    EXPECT_EQ(saved.txtUsernameTabIndex, 9);

    support::writeSettingsFile({.username = "abc", .saveUsername = "2", .dataPath = "/x/"});
    LoginScreenState other;
    ReadSavedUsername(other);
    EXPECT_EQ(other.txtUsername, "");
    EXPECT_FALSE(other.chkSaveUsername);
    EXPECT_EQ(other.txtPasswordTabIndex, 3);
}

TEST_F(SettingsStoreTest, CheckSettingsFile_failures_carry_the_texts_the_start_shows) {
    support::writeSettingsFile({.username = "abc", .saveUsername = "", .dataPath = "/x/"});
    LoginScreenState screen;
    try {
        CheckSettingsFile(screen);
        FAIL() << "an empty SaveUsername is not a number";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::TypeMismatch);
        EXPECT_EQ(StartupFailureText(error), "Typerna matchar inte 13");
    }

    writeDamagedSettings();
    try {
        CheckSettingsFile(screen);
        FAIL() << "a damaged file is not replaced";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040201));
        EXPECT_EQ(error.description().rfind(DamagedPrefix, 0), 0u) << error.description();
        EXPECT_GT(error.description().size(), DamagedPrefix.size());
        EXPECT_EQ(StartupFailureText(error), error.description());
    }
    EXPECT_EQ(support::readBytes(SettingsFilePath()), "<Settings><Username>");
}

TEST_F(SettingsStoreTest, UpdateSettingsFile_without_a_server_uses_the_retired_one_in_memory_only) {
    support::writeSettingsFile({.username = "",
                                .saveUsername = "0",
                                .dataPath = "/d/",
                                .server = std::nullopt,
                                .loginUrl = std::nullopt,
                                .initXmlUrl = std::nullopt});
    UpdateSettingsFile(true, "karin");
    EXPECT_EQ(session().gServer, build::retiredServer);
    EXPECT_EQ(session().gLoginUrl, "/Public/Mirelo/Login.aspx");
    EXPECT_EQ(session().gInitXmlUrl, "/Public/Mirelo/InitXML.aspx");
    EXPECT_EQ(stored("//Server"), "<absent>");
    EXPECT_EQ(stored("//LoginUrl"), "<absent>");
    EXPECT_EQ(stored("//Username"), "karin");
    EXPECT_EQ(stored("//SaveUsername"), "1");
    EXPECT_EQ(stored("//DataPath"), "/d/");

    // An empty Server falls back the same way, and the empty element stays.
    session() = SessionValues{};
    support::writeSettingsFile({.dataPath = "/d/", .server = "", .loginUrl = "/annan"});
    UpdateSettingsFile(false, "karin");
    EXPECT_EQ(session().gServer, build::retiredServer);
    EXPECT_EQ(session().gLoginUrl, "/Public/Mirelo/Login.aspx");
    EXPECT_EQ(stored("//Server"), "");
    EXPECT_EQ(stored("//LoginUrl"), "/annan");
}

TEST_F(SettingsStoreTest, UpdateSettingsFile_keeps_an_old_server_and_forgets_a_cleared_name) {
    support::writeSettingsFile({.username = "karin",
                                .saveUsername = "1",
                                .dataPath = "/d/",
                                .server = "https://gammal.example",
                                .loginUrl = "/in",
                                .initXmlUrl = "/lamna"});
    UpdateSettingsFile(false, "karin");
    EXPECT_EQ(session().gServer, "https://gammal.example");
    EXPECT_EQ(session().gLoginUrl, "/in");
    EXPECT_EQ(session().gInitXmlUrl, "/lamna");
    EXPECT_EQ(stored("//Server"), "https://gammal.example");
    EXPECT_EQ(stored("//Username"), "");
    EXPECT_EQ(stored("//SaveUsername"), "0");

    // A checked box with an empty name stores the empty name.
    UpdateSettingsFile(true, "");
    EXPECT_EQ(stored("//SaveUsername"), "1");
    EXPECT_EQ(stored("//Username"), "");
}

TEST_F(SettingsStoreTest, UpdateSettingsFile_fails_on_a_damaged_or_incomplete_file) {
    support::writeSettingsFile(
        {.dataPath = "/d/", .server = "https://k.example", .loginUrl = std::nullopt});
    try {
        UpdateSettingsFile(false, "");
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::ObjectNotSet);
    }

    support::writeSettingsFile({.saveUsername = std::nullopt, .dataPath = "/d/"});
    EXPECT_THROW(UpdateSettingsFile(false, ""), MireloError);

    writeDamagedSettings();
    try {
        UpdateSettingsFile(false, "");
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), -2147220991);
        EXPECT_EQ(error.description().rfind(DamagedPrefix, 0), 0u);
    }
}

// A file that names its encoding by a name the converter takes but garbles ("ISO-88591" cut the
// rewritten file off at a letter outside the code) is left as it was; a real encoding that lacks
// a letter keeps it as a character reference.
TEST_F(SettingsStoreTest, UpdateSettingsFile_never_writes_a_name_its_encoding_garbles) {
    for (const std::string encoding : {"ISO-88591", "ISO-885911", "ISO-8859-5"}) {
        SCOPED_TRACE(encoding);
        const std::string file = "<?xml version=\"1.0\" encoding=\"" + encoding +
                                 "\"?>\n<Settings><Username/><SaveUsername>0</SaveUsername>"
                                 "<DataPath>/d/</DataPath><Server>https://k.example</Server>"
                                 "<LoginUrl>/l</LoginUrl><InitXmlUrl>/i</InitXmlUrl></Settings>\n";
        std::filesystem::create_directories(SystemFolder());
        support::writeBytes(SettingsFilePath(), file);
        if (encoding == "ISO-8859-5") {
            UpdateSettingsFile(true, "Łukasz Åberg");
            LoginScreenState screen;
            ReadSavedUsername(screen);
            EXPECT_EQ(screen.txtUsername, "Łukasz Åberg");
            continue;
        }
        try {
            UpdateSettingsFile(true, "Łukasz Åberg");
            FAIL();
        } catch (const MireloError &error) {
            EXPECT_EQ(error.number(), runtime::InvalidArgument);
        }
        EXPECT_EQ(support::readBytes(SettingsFilePath()), file);
    }
}

TEST_F(SettingsStoreTest, StartSession_stores_the_login_and_reads_the_data_folder) {
    support::writeSettingsFile({.dataPath = "/srv/patienter/"});
    StartSession("karin", "hemligt", "Dr. Karin Lindqvist");
    EXPECT_EQ(session().gUsername, "karin");
    EXPECT_EQ(session().gPassword, "hemligt");
    EXPECT_EQ(session().gSignature, "Dr. Karin Lindqvist");
    EXPECT_EQ(session().gDataPath, "/srv/patienter/");
    EXPECT_TRUE(boxes.empty());

    support::writeSettingsFile({});
    EXPECT_THROW(StartSession("karin", "hemligt", "K"), MireloError);
}

TEST_F(SettingsStoreTest, StartSession_reports_a_damaged_file_and_keeps_the_old_data_folder) {
    session().gDataPath = "/förra/";
    writeDamagedSettings();
    StartSession("karin", "hemligt", "Dr. K");

    ASSERT_EQ(boxes.size(), 1u);
    const std::string prefix = "Validering av XML misslyckades!\r\nAnledning: ";
    EXPECT_EQ(boxes[0].text.rfind(prefix, 0), 0u) << boxes[0].text;
    EXPECT_GT(boxes[0].text.size(), prefix.size());
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::OK);
    EXPECT_EQ(boxes[0].title, "Mirelo");
    EXPECT_EQ(session().gDataPath, "/förra/");
    EXPECT_EQ(session().gSignature, "Dr. K");
}

TEST_F(SettingsStoreTest, SaveDataPath_creates_the_folder_and_adds_the_trailing_separator) {
    support::writeSettingsFile({.dataPath = appDir() + "/data/"});
    const std::string typed = appDir() + "/patienter";
    EXPECT_EQ(SaveDataPath(typed), typed + "/");
    EXPECT_TRUE(std::filesystem::is_directory(typed));
    EXPECT_EQ(stored("//DataPath"), typed + "/");
    EXPECT_EQ(session().gDataPath, typed + "/");

    // An existing folder is taken as it is.
    EXPECT_EQ(SaveDataPath(appDir() + "/data/"), appDir() + "/data/");
    EXPECT_EQ(stored("//DataPath"), appDir() + "/data/");
}

TEST_F(SettingsStoreTest, SaveDataPath_failures_leave_the_file_and_the_data_folder) {
    support::writeSettingsFile({.dataPath = appDir() + "/data/"});
    const std::string before = support::readBytes(SettingsFilePath());
    try {
        SaveDataPath(appDir() + "/saknas/patienter");
        FAIL() << "only one level is created";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::PathNotFound);
    }
    EXPECT_EQ(support::readBytes(SettingsFilePath()), before);
    EXPECT_EQ(session().gDataPath, appDir() + "/data/");

    writeDamagedSettings();
    try {
        SaveDataPath(appDir() + "/ny");
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040201));
        EXPECT_EQ(error.description().rfind("Kunde inte läsa inställningsfil.\r\nAnledning: ", 0),
                  0u);
    }
    EXPECT_FALSE(std::filesystem::exists(appDir() + "/ny"));
}

} // namespace

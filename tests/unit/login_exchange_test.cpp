#include "build_config.h"
#include "closed_port.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "exchange/login_exchange.h"
#include "korvalo_process.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

using namespace mirelo;
namespace support = mirelo::testing;
using platform::MsgBoxIcon;

namespace {

// Users of the stand-in service, each with the answer a case of the login needs.
const std::string UsersFile = R"(<?xml version="1.0" encoding="UTF-8"?>
<Users>
  <User><Username>karin</Username><Password>rätt-lösen</Password>
    <Signature>Dr. Karin Lindqvist</Signature>
    <Message><Status>0</Status><Description>Välkommen</Description></Message></User>
  <User><Username>not</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status>1</Status><Description>Osynlig notering</Description></Message></User>
  <User><Username>not-och-in</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status>1</Status><Description>Lösenordet går ut i morgon.</Description></Message>
    <Message><Status>0</Status></Message></User>
  <User><Username>not-och-nej</Username><Password>p</Password><Signature>Dr. Nej</Signature>
    <Message><Status>3</Status><Description>Samlas men visas inte</Description></Message>
    <Message><Status>2</Status><Description>Kontot är spärrat.</Description></Message>
    <Message><Status>0</Status></Message></User>
  <User><Username>in-och-nej</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status>0</Status></Message>
    <Message><Status>4</Status><Description>Avtalet har löpt ut.</Description></Message></User>
  <User><Username>blank-och-nej</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status> 0</Status></Message>
    <Message><Status>6</Status><Description>Nekad.</Description></Message></User>
  <User><Username>två-nollor</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status>0</Status></Message><Message><Status>0</Status></Message></User>
  <User><Username>sju</Username><Password>p</Password><Signature>S</Signature>
    <Message><Status>7</Status></Message></User>
  <User><Username>tyst</Username><Password>p</Password><Signature>S</Signature></User>
  <User><Username>utan-signatur</Username><Password>p</Password>
    <Message><Status>0</Status></Message></User>
  <User><Username>utan-status</Username><Password>p</Password><Signature>S</Signature>
    <Message><Description>Ingen status</Description></Message></User>
  <User><Username>serverfel</Username><Password>p</Password><Answer>error</Answer></User>
</Users>
)";

class LoginExchangeTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        support::writeBytes(path("users.xml"), UsersFile);
        korvalo = std::make_unique<support::KorvaloProcess>(
            std::vector<std::string>{"--users", path("users.xml")});
        useServer(korvalo->baseUrl());
    }

    // A settings file that sends the login to this address.
    void useServer(const std::string &baseUrl) {
        support::SettingsFields settings;
        settings.dataPath = appDir() + "/data/";
        settings.server = baseUrl;
        support::writeSettingsFile(settings);
    }

    // One attempt; true when it opened the main frame, and framedBoxes tells how many of the
    // attempt's boxes came up before the frame did.
    bool login(const std::string &username, const std::string &password = "p",
               bool saveUsername = false) {
        bool opened = false;
        const size_t before = boxes.size();
        Login({username, password, saveUsername}, [&] {
            if (!opened) {
                framedBoxes = boxes.size() - before;
            }
            opened = true;
        });
        return opened;
    }
    // The boxes of one attempt, forgetting the earlier ones.
    std::vector<platform::MsgBoxRequest> takeBoxes() { return std::exchange(boxes, {}); }

    std::unique_ptr<support::KorvaloProcess> korvalo;
    size_t framedBoxes = 0;
};

const std::string SupportPrefix = "Kontakta support och ange följande fel: ";

TEST_F(LoginExchangeTest, BuildLoginXML_holds_name_password_and_version_in_order) {
    const platform::XmlDocument document = BuildLoginXML("Åsa", "hemligt <&>");
    EXPECT_EQ(document.xml().rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    std::vector<std::string> fields;
    for (const platform::XmlNode &child : document.selectNodes("/User/*")) {
        fields.push_back(child.nodeName() + "=" + child.text());
    }
    EXPECT_EQ(fields,
              (std::vector<std::string>{"Username=Åsa", "Password=hemligt <&>", "Version=1.0.2"}));
    EXPECT_STREQ(build::version, "1.0.2");
}

TEST_F(LoginExchangeTest, Login_with_an_empty_box_asks_for_both_and_sends_nothing) {
    EXPECT_FALSE(login("karin", "", true));
    EXPECT_FALSE(login("", "rätt-lösen"));
    ASSERT_EQ(boxes.size(), 2u);
    for (const platform::MsgBoxRequest &box : boxes) {
        EXPECT_EQ(box.text, "Fyll i Användarnamn samt Lösenord.");
        EXPECT_EQ(box.icon, MsgBoxIcon::None);
        EXPECT_EQ(box.title, "Mirelo");
    }
    EXPECT_EQ(session().gServer, korvalo->baseUrl());
    EXPECT_EQ(session().gSignature, "");

    // The settings were stored by the attempt all the same; the service heard nothing.
    EXPECT_NE(support::readBytes(SettingsFilePath()).find("<SaveUsername>0</SaveUsername>"),
              std::string::npos);
    login("karin", "", true);
    EXPECT_NE(support::readBytes(SettingsFilePath()).find("<Username>karin</Username>"),
              std::string::npos);
    EXPECT_TRUE(korvalo->stop());
    EXPECT_EQ(korvalo->output().find("Login.aspx"), std::string::npos) << korvalo->output();
}

TEST_F(LoginExchangeTest, Login_accepted_opens_the_main_frame_and_starts_the_session) {
    EXPECT_TRUE(login("karin", "rätt-lösen"));
    EXPECT_TRUE(boxes.empty());
    EXPECT_EQ(session().gUsername, "karin");
    EXPECT_EQ(session().gPassword, "rätt-lösen");
    EXPECT_EQ(session().gSignature, "Dr. Karin Lindqvist");
    EXPECT_EQ(session().gDataPath, appDir() + "/data/");
    EXPECT_EQ(session().gLoginUrl, "/Public/Mirelo/Login.aspx");
}

TEST_F(LoginExchangeTest, Login_refused_shows_the_refusal_and_keeps_the_attempts_values) {
    session().gDataPath = "";
    EXPECT_FALSE(login("karin", "fel"));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, "Felaktigt användarnamn eller lösenord.");
    EXPECT_EQ(boxes[0].icon, MsgBoxIcon::Stop);
    EXPECT_EQ(session().gUsername, "karin");
    EXPECT_EQ(session().gPassword, "fel");
    EXPECT_EQ(session().gSignature, "");
    EXPECT_EQ(session().gDataPath, appDir() + "/data/");
    takeBoxes();

    // A refusal after a note shows only the refusal; the signature is the attempt's.
    EXPECT_FALSE(login("not-och-nej"));
    const auto refusal = takeBoxes();
    ASSERT_EQ(refusal.size(), 1u);
    EXPECT_EQ(refusal[0].text, "Kontot är spärrat.");
    EXPECT_EQ(session().gSignature, "Dr. Nej");

    EXPECT_FALSE(login("blank-och-nej"));
    EXPECT_EQ(takeBoxes().at(0).text, "Nekad.");
}

TEST_F(LoginExchangeTest, HandleLoginResponse_shows_notes_only_when_there_are_several_messages) {
    EXPECT_TRUE(login("not"));
    EXPECT_TRUE(takeBoxes().empty());

    // The status 0 opens the frame; the collected notes come up over it afterwards.
    EXPECT_TRUE(login("not-och-in"));
    EXPECT_EQ(framedBoxes, 0u);
    auto shown = takeBoxes();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "Lösenordet går ut i morgon.\r\n");
    EXPECT_EQ(shown[0].icon, MsgBoxIcon::None);

    EXPECT_TRUE(login("två-nollor"));
    shown = takeBoxes();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "");

    EXPECT_TRUE(login("sju"));
    EXPECT_FALSE(login("tyst"));
    EXPECT_TRUE(takeBoxes().empty());

    // A status 0 ahead of a refusal has let the user in already.
    EXPECT_TRUE(login("in-och-nej"));
    EXPECT_EQ(framedBoxes, 0u);
    shown = takeBoxes();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "Avtalet har löpt ut.");
    EXPECT_EQ(shown[0].icon, MsgBoxIcon::Stop);
}

TEST_F(LoginExchangeTest, Login_an_error_page_ends_the_process_with_the_support_text) {
    EXPECT_THROW(login("serverfel"), support::ProcessEnded);
    EXPECT_TRUE(processEnded);
    ASSERT_EQ(boxes.size(), 1u);
    const std::string expected =
        SupportPrefix + "-2147220990 Svaret från Korvalo kunde inte behandlas.\r\nAnledning: ";
    EXPECT_EQ(boxes[0].text.rfind(expected, 0), 0u) << boxes[0].text;
    EXPECT_GT(boxes[0].text.size(), expected.size());
    EXPECT_EQ(boxes[0].icon, MsgBoxIcon::Stop);
    // The answer was never read, so the session was not started.
    EXPECT_EQ(session().gUsername, "");
}

TEST_F(LoginExchangeTest, Login_a_missing_Signature_or_Status_ends_the_process) {
    for (const char *user : {"utan-signatur", "utan-status"}) {
        boxes.clear();
        processEnded = false;
        EXPECT_THROW(login(user), support::ProcessEnded) << user;
        EXPECT_TRUE(processEnded);
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].text,
                  SupportPrefix + "91 " + runtime::description(runtime::ObjectNotSet));
    }
}

TEST_F(LoginExchangeTest, Login_a_damaged_settings_file_ends_the_process_before_any_request) {
    support::writeBytes(SettingsFilePath(), "inte xml");
    EXPECT_THROW(login("karin", "rätt-lösen"), support::ProcessEnded);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text.rfind(SupportPrefix + "-2147220991 Inställningsfilen är skadad.", 0),
              0u)
        << boxes[0].text;
    EXPECT_TRUE(korvalo->stop());
    EXPECT_EQ(korvalo->output().find("Login.aspx"), std::string::npos);
}

TEST_F(LoginExchangeTest, Login_to_a_server_that_is_not_there_can_be_tried_again) {
    const support::ClosedPort closed;
    useServer(closed.baseUrl());
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_FALSE(login("karin", "rätt-lösen"));
    }
    EXPECT_FALSE(processEnded);
    ASSERT_EQ(boxes.size(), 2u);
    for (const platform::MsgBoxRequest &box : boxes) {
        EXPECT_EQ(box.text, "Kunde inte ansluta till Mirelos loginserver. Kontrollera din "
                            "internetförbindelse.");
        EXPECT_EQ(box.icon, MsgBoxIcon::Stop);
    }
}

TEST_F(LoginExchangeTest, the_demo_user_is_there_out_of_the_box) {
    support::KorvaloProcess plain;
    useServer(plain.baseUrl());

    EXPECT_TRUE(login("demo", "demo123"));
    EXPECT_EQ(session().gSignature, "Dr. Karin Lindqvist, Vårdcentralen Åby");
    EXPECT_FALSE(login("demo", "fel"));
    EXPECT_TRUE(plain.stop());
}

} // namespace

#include "browser_processes.h"
#include "closed_port.h"
#include "core/application_context.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "form_page_server.h"
#include "gui_application.h"
#include "patient_file_builder.h"
#include "platform/process_browser.h"
#include "test_environment.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

const std::string ConnectionBox =
    "Kunde inte ansluta till Korvalos server. Kontrollera din internetförbindelse.";

class BrowserHandoffTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        support::ensureGuiApplication();
        session().gServer = pages.baseUrl();
        session().gInitXmlUrl = "/handover";
        session().gUsername = "demo";
        session().gPassword = "hemligt <&> lösen \"1\"";
    }

    // The post of the browser arrives after the hand-off has let go.
    bool waitForPost() {
        return QTest::qWaitFor([this] { return pages.postsReceived() > 0; }, 20000);
    }

    // The browser's window as the physician finds it after the hand-off.
    void expectShownMaximizedAndOffTheRecord(std::size_t browser) {
        const QJsonObject window = browsers.status(browser);
        EXPECT_TRUE(window.value("visible").toBool());
        EXPECT_TRUE(window.value("maximized").toBool());
        EXPECT_TRUE(window.value("offTheRecord").toBool());
    }

    support::FormPageServer pages;
    support::BrowserProcesses browsers;
};

TEST_F(BrowserHandoffTest, a_patient_is_posted_exactly_as_built_and_the_browser_becomes_the_users) {
    support::ProductFields current;
    current.id = "S2_1";
    current.regNr = "777";
    current.note = "Tas med mat &amp; vatten &lt;morgon&gt;";
    support::ProductFields past = current;
    past.id = "S1_1";
    past.checked = "0";
    platform::XmlDocument patient;
    ASSERT_TRUE(
        patient.loadXML(support::patientText("191212121212", "Åström", "Märta", {current, past})));
    const auto handover = CreatePrescriptionXML(&patient, "");
    ASSERT_TRUE(handover);
    const std::string built = handover->xml();

    SubmitPrescriptionXML(handover);
    ASSERT_TRUE(waitForPost());

    // The field's text is posted with the browser's line breaks; the document must be the same.
    platform::XmlDocument received;
    ASSERT_TRUE(received.loadXML(pages.lastPost().at("txtXml")));
    EXPECT_EQ(received.xml(), built);
    EXPECT_EQ(received.selectSingleNode("//PrescriberInfo/Password").text(),
              "hemligt <&> lösen \"1\"");
    EXPECT_EQ(received.selectNodes("//MedicalList/Product").size(), 1u);
    EXPECT_EQ(received.selectSingleNode("//Product/ExtendedMedicalInfo").text(),
              "Tas med mat & vatten <morgon>");
    EXPECT_EQ(pages.wrongFormPosts(), 0);
    EXPECT_TRUE(boxes.empty());
    ASSERT_EQ(browsers.started(), 1u);
    expectShownMaximizedAndOffTheRecord(0);
}

TEST_F(BrowserHandoffTest, a_number_without_a_file_is_posted_in_PrescriberInfo_alone) {
    SubmitPatientPnr("191212121212");
    ASSERT_TRUE(waitForPost());

    platform::XmlDocument received;
    ASSERT_TRUE(received.loadXML(pages.lastPost().at("txtXml")));
    EXPECT_EQ(received.xml(), CreatePrescriptionXML(nullptr, "191212121212")->xml());
    EXPECT_EQ(received.documentElement().childNodes().size(), 1u);
    EXPECT_EQ(received.selectSingleNode("/Patient/PrescriberInfo/Pnr").text(), "191212121212");
    EXPECT_TRUE(boxes.empty());
    ASSERT_EQ(browsers.started(), 1u);
    expectShownMaximizedAndOffTheRecord(0);
}

TEST_F(BrowserHandoffTest, the_login_fields_go_into_the_form_named_Login) {
    session().gInitXmlUrl = "/login";
    SubmitLoginFields("191212121212");
    ASSERT_TRUE(waitForPost());

    EXPECT_EQ(pages.lastPost(),
              (support::FormPageServer::Fields{{"txtUsername", "demo"},
                                               {"txtPassword", "hemligt <&> lösen \"1\""},
                                               {"txtPath", appDir() + "/in/"},
                                               {"txtVersion", "1.0.2"},
                                               {"txtPatientPnr", "191212121212"}}));
    EXPECT_EQ(pages.wrongFormPosts(), 0);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(
    BrowserHandoffTest,
    a_page_without_the_form_a_closed_port_and_a_browser_that_never_comes_give_the_connection_box) {
    session().gInitXmlUrl = "/without-field";
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    SubmitPatientPnr("1912");
    session().gInitXmlUrl = "/handover";
    SubmitLoginFields("1912");
    const support::ClosedPort closed;
    session().gServer = closed.baseUrl();
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    // An executable that ends at once without ever answering, as a broken installation would.
    platform::setBrowserFactory([] {
        return platform::makeProcessBrowser(
            std::make_shared<platform::BrowserChannel>("/bin/true"));
    });
    SubmitPatientPnr("1912");

    ASSERT_EQ(boxes.size(), 5u);
    for (const platform::MsgBoxRequest &box : boxes) {
        EXPECT_EQ(box.text, ConnectionBox);
        EXPECT_EQ(box.icon, platform::MsgBoxIcon::Stop);
        EXPECT_EQ(box.buttons, platform::MsgBoxButtons::OK);
        EXPECT_EQ(box.title, "Mirelo");
    }
    EXPECT_EQ(pages.postsReceived(), 0);
    EXPECT_EQ(pages.wrongFormPosts(), 0);
}

TEST_F(BrowserHandoffTest, the_browser_lives_on_when_mirelo_ends_and_keeps_the_password_to_itself) {
    const std::string password = "Pw-hemligt-91";
    // The browser inherits its home from Mirelo; here it is inside the test's folder, so a
    // profile written to disk would be found below.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
        environment.insert(variable, QString::fromStdString(path("home")));
    }
    QProcess mirelo;
    mirelo.setProcessEnvironment(environment);
    mirelo.setProcessChannelMode(QProcess::MergedChannels);
    mirelo.start(MIRELO_HANDOFF_THEN_END_BINARY,
                 {QString::fromStdString(appDir()), QString::fromStdString(pages.baseUrl()),
                  QStringLiteral("/handover"), QString::fromStdString(password)});
    ASSERT_TRUE(mirelo.waitForFinished(60000));
    EXPECT_EQ(mirelo.exitStatus(), QProcess::NormalExit);
    const std::string printed = mirelo.readAllStandardOutput().toStdString();
    const QRegularExpressionMatch line =
        QRegularExpression("^browser (\\d+)$", QRegularExpression::MultilineOption)
            .match(QString::fromStdString(printed));
    ASSERT_TRUE(line.hasMatch()) << printed;
    const pid_t browser = line.captured(1).toInt();
    // Whatever else happens, the browser this test caused ends with it.
    struct Ending {
        pid_t pid;
        ~Ending() { support::endBrowserProcess(pid); }
    } ending{browser};
    EXPECT_EQ(printed.find("\nbox "), std::string::npos) << printed;

    ASSERT_TRUE(waitForPost());
    // Calls from the page shown in the browser go on arriving after Mirelo has ended.
    const int callsWhenMireloEnded = pages.alivePings();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return pages.alivePings() > callsWhenMireloEnded + 2; }, 20000));
    EXPECT_TRUE(platform::processRunning(browser));

    // The password reached the page, through the channel alone.
    EXPECT_NE(pages.lastPost().at("txtXml").find(password), std::string::npos);
    const std::string process = "/proc/" + std::to_string(browser);
    const std::string commandLine = support::readBytes(process + "/cmdline");
    EXPECT_NE(commandLine.find("mirelo-browser"), std::string::npos);
    EXPECT_EQ(commandLine.find(password), std::string::npos);
    EXPECT_EQ(support::readBytes(process + "/environ").find(password), std::string::npos);
    EXPECT_EQ(printed.find(password), std::string::npos);
    EXPECT_TRUE(support::filesHolding(appDir(), password).empty());
}

} // namespace

#include "browser_processes.h"
#include "closed_port.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "form_page_server.h"
#include "gui_application.h"
#include "patient_file_builder.h"
#include "platform/process_browser.h"
#include "test_environment.h"

#include <QProcess>
#include <QTest>
#include <regex>

namespace mirelo::testing {
namespace {

class BrowserHandoffTest : public ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        ensureGuiApplication();
        session() = {.gDataPath = path("data/"),
                     .gUsername = "demo",
                     .gPassword = "hemligt <&> lösen \"1\"",
                     .gServer = pages.baseUrl(),
                     .gInitXmlUrl = "/handover"};
    }
    bool waitForPosts(int posts) {
        return QTest::qWaitFor([&] { return pages.postsReceived() >= posts; }, 20000);
    }

    FormPageServer pages;
    BrowserProcesses browsers;
};

TEST_F(BrowserHandoffTest,
       a_patient_and_the_login_form_are_posted_as_built_and_the_window_left_shown) {
    platform::XmlDocument patient, posted;
    ASSERT_TRUE(patient.loadXML(patientText(
        "191212121212", "Åström", "Märta",
        {{.id = "S2_1", .regNr = "777", .note = "Tas med mat &amp; vatten &lt;morgon&gt;"},
         {.id = "S1_1", .regNr = "777", .checked = "0"}})));
    const auto handover = CreatePrescriptionXML(&patient, "");
    SubmitPrescriptionXML(handover);
    ASSERT_TRUE(waitForPosts(1));
    // The field's text comes with the browser's line breaks; the document must be the same.
    ASSERT_TRUE(posted.loadXML(pages.lastPost().at("txtXml")));
    EXPECT_EQ(posted.xml(), handover->xml());

    session().gInitXmlUrl = "/login";
    SubmitLoginFields("191212121212");
    ASSERT_TRUE(waitForPosts(2));
    // Into the form named Login, not the page's first.
    EXPECT_EQ(pages.lastPost().at("txtPassword"), session().gPassword);
    EXPECT_EQ(pages.wrongFormPosts(), 0);
    EXPECT_THAT(said(), IsEmpty());
    // The window is the physician's now: shown, maximized, and keeping nothing on disk.
    ASSERT_EQ(browsers.started(), 2u);
    for (std::size_t browser = 0; browser < 2; ++browser) {
        for (const char *state : {"visible", "maximized", "offTheRecord"}) {
            EXPECT_TRUE(browsers.status(browser).value(state).toBool()) << browser << state;
        }
    }
}

TEST_F(BrowserHandoffTest, no_form_a_closed_port_or_a_browser_that_never_answers_is_no_connection) {
    session().gInitXmlUrl = "/without-field";
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    SubmitPatientPnr("1912");
    session().gInitXmlUrl = "/handover"; // no form named Login
    SubmitLoginFields("1912");
    const ClosedPort closed;
    session().gServer = closed.baseUrl();
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    // An executable that ends at once without ever answering, as a broken installation would.
    platform::setBrowserFactory([] {
        return platform::makeProcessBrowser(
            std::make_shared<platform::BrowserChannel>("/bin/true"));
    });
    SubmitPatientPnr("1912");
    EXPECT_EQ(said(), Texts(5, "[stop] Kunde inte ansluta till Korvalos server. Kontrollera din "
                               "internetförbindelse."));
    EXPECT_EQ(pages.postsReceived() + pages.wrongFormPosts(), 0);
}

TEST_F(BrowserHandoffTest, the_browser_lives_on_when_mirelo_ends_and_keeps_the_password_to_itself) {
    const std::string password = session().gPassword = "Pw-hemligt-91";
    QProcess mirelo;
    mirelo.setProcessChannelMode(QProcess::MergedChannels);
    mirelo.start(MIRELO_HANDOFF_THEN_END_BINARY,
                 {QString::fromStdString(appDir()), QString::fromStdString(pages.baseUrl()),
                  QStringLiteral("/handover"), QString::fromStdString(password)});
    ASSERT_TRUE(mirelo.waitForFinished(60000));
    const std::string printed = mirelo.readAllStandardOutput().toStdString();
    std::smatch line;
    ASSERT_TRUE(std::regex_search(printed, line, std::regex("(^|\n)browser ([0-9]+)\n")))
        << printed;
    EXPECT_FALSE(std::regex_search(printed, std::regex("(^|\n)box ")));
    // Whatever else happens, the browser this test caused ends with it.
    struct Ending {
        pid_t pid;
        ~Ending() { endBrowserProcess(pid); }
    } browser{std::stoi(line[2])};

    ASSERT_TRUE(waitForPosts(1));
    // Calls from the page shown in the browser go on arriving after Mirelo has ended.
    const int callsWhenMireloEnded = pages.alivePings();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return pages.alivePings() > callsWhenMireloEnded + 2; }, 20000));
    EXPECT_TRUE(platform::processRunning(browser.pid));

    // The number was posted as built, its password reaching the page through the channel alone.
    platform::XmlDocument posted;
    ASSERT_TRUE(posted.loadXML(pages.lastPost().at("txtXml")));
    EXPECT_EQ(posted.xml(), CreatePrescriptionXML(nullptr, "191212121212")->xml());
    const std::string process = "/proc/" + std::to_string(browser.pid);
    EXPECT_THAT(readBytes(process + "/cmdline"), HasSubstr("mirelo-browser"));
    EXPECT_THAT(readBytes(process + "/cmdline") + readBytes(process + "/environ") + printed,
                ::testing::Not(HasSubstr(password)));
    EXPECT_THAT(filesHolding(appDir(), password), IsEmpty());
}

} // namespace
} // namespace mirelo::testing

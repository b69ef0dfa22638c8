#include "core/application_context.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "gui_application.h"
#include "korvalo_process.h"
#include "platform/gui/web_browser.h"
#include "test_environment.h"
#include "web_client.h"

#include <QApplication>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>
#include <gtest/gtest.h>
#include <memory>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

class BrowserHandoffTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        support::ensureGuiApplication();
        platform::installWebBrowser();
        korvalo = std::make_unique<support::KorvaloProcess>(
            std::vector<std::string>{"--inbox", path("in")});
        session().gServer = korvalo->baseUrl();
        session().gInitXmlUrl = "/Public/Mirelo/InitXML.aspx";
        session().gUsername = "demo";
        session().gPassword = "demo123";
    }

    void TearDown() override {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (qobject_cast<QWebEngineView *>(window)) {
                window->close();
            }
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        korvalo.reset();
        ApplicationTest::TearDown();
    }

    // What the service's page received in txtXml, once the browser's post has arrived.
    std::string receivedHandover() {
        support::WebAnswer answer;
        for (int attempt = 0; attempt < 200; ++attempt) {
            answer = support::webGet(korvalo->baseUrl() + "/test/last-handover");
            if (answer.status == 200) {
                return answer.body;
            }
            QTest::qWait(50);
        }
        return {};
    }

    QWebEngineView *shownBrowser() {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (auto *view = qobject_cast<QWebEngineView *>(window); view && view->isVisible()) {
                return view;
            }
        }
        return nullptr;
    }

    std::unique_ptr<support::KorvaloProcess> korvalo;
};

TEST_F(BrowserHandoffTest, the_page_receives_exactly_the_document_and_the_browser_is_shown) {
    platform::XmlDocument patient;
    ASSERT_TRUE(patient.loadXML("<Patient><PatientData><FamilyName>Åström</FamilyName>"
                                "<Pnr>191212121212</Pnr></PatientData><MedicalList/></Patient>"));
    const auto handover = CreatePrescriptionXML(&patient, "");
    ASSERT_TRUE(handover);
    const std::string sent = handover->xml();
    SubmitPrescriptionXML(handover);

    platform::XmlDocument received;
    ASSERT_TRUE(received.loadXML(receivedHandover()));
    EXPECT_EQ(received.xml(), sent);
    EXPECT_EQ(received.selectSingleNode("//PrescriberInfo/Password").text(), "demo123");
    QWebEngineView *browser = shownBrowser();
    ASSERT_NE(browser, nullptr);
    EXPECT_TRUE(browser->windowState().testFlag(Qt::WindowMaximized));
    EXPECT_TRUE(browser->page()->profile()->isOffTheRecord());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(BrowserHandoffTest, a_number_without_a_file_goes_over_with_PrescriberInfo_only) {
    SubmitPatientPnr("1912");
    platform::XmlDocument received;
    ASSERT_TRUE(received.loadXML(receivedHandover()));
    EXPECT_EQ(received.selectSingleNode("//PrescriberInfo/Pnr").text(), "1912");
    EXPECT_TRUE(received.selectSingleNode("//PatientData").isNull());
    EXPECT_TRUE(boxes.empty());
}

TEST_F(BrowserHandoffTest, a_page_without_the_field_or_a_closed_port_gives_the_connection_box) {
    const std::string connectionBox =
        "Kunde inte ansluta till Korvalos server. Kontrollera din internetförbindelse.";
    session().gInitXmlUrl = "/no-such-page";
    SubmitPatientPnr("1912");
    session().gServer = "http://127.0.0.1:9";
    session().gInitXmlUrl = "/Public/Mirelo/InitXML.aspx";
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[0].text, connectionBox);
    EXPECT_EQ(boxes[1].text, connectionBox);
    EXPECT_EQ(boxes[1].icon, platform::MsgBoxIcon::Stop);
}

} // namespace

#include "closed_port.h"
#include "core/application_context.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "form_page_server.h"
#include "gui_application.h"
#include "patient_file_builder.h"
#include "platform/browser.h"
#include "platform/gui/web_browser.h"
#include "test_environment.h"

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>
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
        platform::installWebBrowser();
        session().gServer = pages.baseUrl();
        session().gInitXmlUrl = "/handover";
        session().gUsername = "demo";
        session().gPassword = "hemligt <&> lösen \"1\"";
    }

    void TearDown() override {
        for (QWebEngineView *view : browsers()) {
            view->close();
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        platform::setBrowserFactory({});
        ApplicationTest::TearDown();
    }

    // The post of the browser arrives after the hand-off has let go, while events run.
    bool waitForPost() {
        return QTest::qWaitFor([this] { return pages.postsReceived() > 0; }, 20000);
    }

    static std::vector<QWebEngineView *> browsers() {
        std::vector<QWebEngineView *> views;
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (auto *view = qobject_cast<QWebEngineView *>(window)) {
                views.push_back(view);
            }
        }
        return views;
    }

    support::FormPageServer pages;
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

    const std::vector<QWebEngineView *> views = browsers();
    ASSERT_EQ(views.size(), 1u);
    EXPECT_TRUE(views[0]->isVisible());
    EXPECT_TRUE(views[0]->windowState().testFlag(Qt::WindowMaximized));
    QPointer<QWebEngineProfile> profile = views[0]->page()->profile();
    EXPECT_TRUE(profile->isOffTheRecord());

    // Closing the browser frees it, its page and its profile, and nothing else happens.
    views[0]->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(browsers().empty());
    EXPECT_TRUE(profile.isNull());
    EXPECT_TRUE(boxes.empty());
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
    ASSERT_EQ(browsers().size(), 1u);
    EXPECT_TRUE(browsers()[0]->windowState().testFlag(Qt::WindowMaximized));
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

TEST_F(BrowserHandoffTest,
       a_page_without_the_form_or_field_and_a_closed_port_give_the_connection_box) {
    session().gInitXmlUrl = "/without-field";
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    SubmitPatientPnr("1912");
    session().gInitXmlUrl = "/handover";
    SubmitLoginFields("1912");
    const support::ClosedPort closed;
    session().gServer = closed.baseUrl();
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));

    ASSERT_EQ(boxes.size(), 4u);
    for (const platform::MsgBoxRequest &box : boxes) {
        EXPECT_EQ(box.text, ConnectionBox);
        EXPECT_EQ(box.icon, platform::MsgBoxIcon::Stop);
        EXPECT_EQ(box.buttons, platform::MsgBoxButtons::OK);
        EXPECT_EQ(box.title, "Mirelo");
    }
    EXPECT_EQ(pages.postsReceived(), 0);
    EXPECT_EQ(pages.wrongFormPosts(), 0);
}

} // namespace

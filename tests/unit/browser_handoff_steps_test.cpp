#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "platform/browser.h"
#include "test_environment.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

const std::string ConnectionBox =
    "Kunde inte ansluta till Korvalos server. Kontrollera din internetförbindelse.";

// What a hand-off asked of its browser, step by step, and where the page lets it down.
struct BrowserScript {
    int incompleteReads = 0;
    std::map<std::string, int32_t> failingSteps;
    std::vector<std::string> steps;
    int browsersMade = 0;
};

class ScriptedBrowser : public platform::Browser {
  public:
    explicit ScriptedBrowser(BrowserScript &script) : script_(script) { ++script_.browsersMade; }

    void Navigate(const std::string &url) override { step("Navigate " + url); }
    int ReadyState() override {
        return script_.incompleteReads-- > 0 ? 1 : platform::ReadyStateComplete;
    }
    void Sleep(int milliseconds) override { step("Sleep " + std::to_string(milliseconds)); }
    void SetFirstFormField(const std::string &field, const std::string &value) override {
        step("Forms(0)." + field, value);
    }
    void SubmitFirstForm() override { step("Forms(0).Submit"); }
    void SetLoginFormField(const std::string &field, const std::string &value) override {
        step("Login." + field, value);
    }
    void SubmitLoginForm() override { step("Login.Submit"); }
    void ShowMaximized() override { step("ShowMaximized"); }
    void SetVisible() override { step("Visible"); }
    void BringToFront() override { step("AppActivate"); }

  private:
    void step(const std::string &name, const std::string &value = {}) {
        if (const auto failure = script_.failingSteps.find(name);
            failure != script_.failingSteps.end()) {
            runtime::raise(failure->second);
        }
        script_.steps.push_back(value.empty() ? name : name + " = " + value);
    }

    BrowserScript &script_;
};

class BrowserHandoffStepsTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        platform::setBrowserFactory([this] { return std::make_unique<ScriptedBrowser>(script); });
        session().gServer = "https://korvalo.example";
        session().gInitXmlUrl = "/Public/Mirelo/InitXML.aspx";
        session().gUsername = "demo";
        session().gPassword = "lösen";
    }
    void TearDown() override {
        platform::setBrowserFactory({});
        ApplicationTest::TearDown();
    }

    // Runs one hand-off against a fresh script and gives the texts of the boxes it showed.
    template <typename HandOff>
    std::vector<std::string> boxesOf(std::map<std::string, int32_t> failingSteps, HandOff handOff) {
        script = BrowserScript{};
        script.failingSteps = std::move(failingSteps);
        boxes.clear();
        handOff();
        std::vector<std::string> texts;
        for (const platform::MsgBoxRequest &box : boxes) {
            texts.push_back(box.text);
        }
        return texts;
    }

    BrowserScript script;
};

TEST_F(BrowserHandoffStepsTest,
       each_hand_off_waits_for_the_page_then_fills_posts_and_shows_in_order) {
    const std::string url = "https://korvalo.example/Public/Mirelo/InitXML.aspx";
    const std::string patientDocument = CreatePrescriptionXML(nullptr, "1912")->xml();

    script.incompleteReads = 2;
    SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1912"));
    EXPECT_EQ(script.steps,
              (std::vector<std::string>{"Navigate " + url, "Sleep 100", "Sleep 100",
                                        "Forms(0).txtXml = " + patientDocument, "Forms(0).Submit",
                                        "ShowMaximized", "Visible", "AppActivate"}));

    // For a bare number the window is shown before the form is filled.
    script = BrowserScript{};
    script.incompleteReads = 1;
    SubmitPatientPnr("1912");
    EXPECT_EQ(script.steps,
              (std::vector<std::string>{"Navigate " + url, "Sleep 100", "ShowMaximized",
                                        "Forms(0).txtXml = " + patientDocument, "Forms(0).Submit",
                                        "ShowMaximized", "Visible", "AppActivate"}));

    script = BrowserScript{};
    script.incompleteReads = 1;
    SubmitLoginFields("1912");
    EXPECT_EQ(script.steps, (std::vector<std::string>{
                                "Navigate " + url, "Sleep 500", "Login.txtUsername = demo",
                                "Login.txtPassword = lösen", "Login.txtPath = " + appDir() + "/in/",
                                "Login.txtVersion = 1.0.2", "Login.txtPatientPnr = 1912",
                                "Login.Submit", "ShowMaximized", "Visible", "AppActivate"}));
    EXPECT_EQ(script.browsersMade, 1);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(BrowserHandoffStepsTest, a_missing_member_or_a_damaged_answer_means_no_connection) {
    const auto prescription = [] { SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1")); };
    const auto number = [] { SubmitPatientPnr("1"); };
    const auto login = [] { SubmitLoginFields("1"); };
    for (const auto &handOff : std::vector<std::function<void()>>{prescription, number}) {
        EXPECT_EQ(boxesOf({{"Forms(0).txtXml", runtime::NotSupportedByObject}}, handOff),
                  std::vector<std::string>{ConnectionBox});
        EXPECT_EQ(boxesOf({{"Forms(0).Submit", errors::LoginResponseDamaged}}, handOff),
                  std::vector<std::string>{ConnectionBox});
    }
    EXPECT_EQ(boxesOf({{"Login.txtVersion", runtime::NotSupportedByObject}}, login),
              std::vector<std::string>{ConnectionBox});
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(boxes[0].title, "Mirelo");
    // Nothing is undone: the page stays as the failure left it.
    EXPECT_EQ(script.steps.back(), "Login.txtPath = " + appDir() + "/in/");
}

TEST_F(BrowserHandoffStepsTest, other_failures_are_reported_only_for_a_bare_number) {
    const auto prescription = [] { SubmitPrescriptionXML(CreatePrescriptionXML(nullptr, "1")); };
    const auto number = [] { SubmitPatientPnr("1"); };
    const auto login = [] { SubmitLoginFields("1"); };

    EXPECT_TRUE(boxesOf({{"Forms(0).Submit", runtime::PathNotFound}}, prescription).empty());
    EXPECT_TRUE(boxesOf({{"Login.Submit", runtime::PathNotFound}}, login).empty());
    EXPECT_EQ(boxesOf({{"Forms(0).Submit", runtime::PathNotFound}}, number),
              std::vector<std::string>{"Fel uppstod: [76] Sökvägen hittades inte"});
    EXPECT_EQ(boxesOf({{"Visible", errors::SettingsDamaged}}, number),
              std::vector<std::string>{"Fel uppstod: [-2147220991] " +
                                       runtime::description(errors::SettingsDamaged)});

    // Bringing the window forward comes last, and its failure passes unnoticed in all three.
    for (const auto &handOff : std::vector<std::function<void()>>{prescription, number, login}) {
        EXPECT_TRUE(boxesOf({{"AppActivate", runtime::InvalidArgument}}, handOff).empty());
    }
}

TEST_F(BrowserHandoffStepsTest, a_handover_that_was_never_made_stops_before_the_page_is_touched) {
    // The document's text is read before the page's field, so even a page without the field
    // adds no box to the one that told of the failed document.
    EXPECT_TRUE(boxesOf({{"Forms(0).txtXml", runtime::NotSupportedByObject}}, [] {
                    SubmitPrescriptionXML(std::nullopt);
                }).empty());
    EXPECT_EQ(script.steps.back(), "Navigate https://korvalo.example/Public/Mirelo/InitXML.aspx");
}

} // namespace

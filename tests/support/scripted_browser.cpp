#include "scripted_browser.h"

#include "core/mirelo_error.h"
#include "platform/browser.h"

#include <memory>

namespace mirelo::testing {
namespace {

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

} // namespace

std::string BrowserScript::field(const std::string &name) const {
    const std::string prefix = "Forms(0)." + name + " = ";
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (step->rfind(prefix, 0) == 0) {
            return step->substr(prefix.size());
        }
    }
    return {};
}

void scriptBrowsers(BrowserScript &script) {
    platform::setBrowserFactory([&script] { return std::make_unique<ScriptedBrowser>(script); });
}

} // namespace mirelo::testing

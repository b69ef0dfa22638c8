#include "platform/process_browser.h"

#include "core/mirelo_error.h"
#include "platform/browser_protocol.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>

namespace mirelo::platform {
namespace {

namespace protocol = browser_protocol;

// Hands a text to a script as a JSON string literal, never by pasting it into the code.
QString jsonLiteral(const std::string &text) {
    const QByteArray array =
        QJsonDocument(QJsonArray{QString::fromStdString(text)}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

// The page's forms are reached by script. Each script answers whether the page had what it
// needed; a page without it is the run time's "object doesn't support this property or
// method", and so is a browser that never came or has gone.
class ProcessBrowser : public Browser {
  public:
    explicit ProcessBrowser(std::shared_ptr<BrowserChannel> channel)
        : channel_(std::move(channel)) {}

    void Navigate(const std::string &url) override {
        step({{protocol::Step, protocol::Navigate}, {protocol::Url, QString::fromStdString(url)}});
    }

    int ReadyState() override {
        return step({{protocol::Step, protocol::ReadyState}}).value(protocol::ReadyState).toInt();
    }

    void Sleep(int milliseconds) override {
        const BrowserWait blocking;
        QEventLoop wait;
        QTimer::singleShot(milliseconds, &wait, &QEventLoop::quit);
        wait.exec();
    }

    void SetFirstFormField(const std::string &field, const std::string &value) override {
        runFound(QStringLiteral("(function(name, value) { var form = document.forms[0];"
                                " if (!form || !form.elements[name]) return false;"
                                " form.elements[name].value = value; return true; })(%1, %2)")
                     .arg(jsonLiteral(field), jsonLiteral(value)));
    }

    void SubmitFirstForm() override {
        runFound(QStringLiteral("(function() { var form = document.forms[0]; if (!form) return "
                                "false; HTMLFormElement.prototype.submit.call(form); return true; "
                                "})()"));
    }

    void SetLoginFormField(const std::string &field, const std::string &value) override {
        runFound(QStringLiteral("(function(name, value) { var form = document.forms['Login'];"
                                " if (!form || !form.elements[name]) return false;"
                                " form.elements[name].value = value; return true; })(%1, %2)")
                     .arg(jsonLiteral(field), jsonLiteral(value)));
    }

    void SubmitLoginForm() override {
        runFound(QStringLiteral("(function() { var form = document.forms['Login'];"
                                " if (!form) return false;"
                                " HTMLFormElement.prototype.submit.call(form); return true; })()"));
    }

    void ShowMaximized() override { step({{protocol::Step, protocol::ShowMaximized}}); }
    void SetVisible() override { step({{protocol::Step, protocol::Show}}); }
    void BringToFront() override { step({{protocol::Step, protocol::Activate}}); }

  private:
    QJsonObject step(const QJsonObject &request) {
        const std::optional<QJsonObject> answer = channel_->ask(request);
        if (!answer || !answer->value(protocol::Ok).toBool()) {
            runtime::raise(runtime::NotSupportedByObject);
        }
        return *answer;
    }

    void runFound(const QString &script) {
        if (!step({{protocol::Step, protocol::Script}, {protocol::Script, script}})
                 .value(protocol::Value)
                 .toBool()) {
            runtime::raise(runtime::NotSupportedByObject);
        }
    }

    std::shared_ptr<BrowserChannel> channel_;
};

} // namespace

std::unique_ptr<Browser> makeProcessBrowser(std::shared_ptr<BrowserChannel> channel) {
    return std::make_unique<ProcessBrowser>(std::move(channel));
}

void installProcessBrowser(const std::string &executable) {
    setBrowserFactory(
        [executable] { return makeProcessBrowser(std::make_shared<BrowserChannel>(executable)); });
}

} // namespace mirelo::platform

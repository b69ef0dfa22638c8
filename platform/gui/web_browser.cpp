#include "platform/gui/web_browser.h"

#include "core/mirelo_error.h"
#include "platform/browser.h"

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace mirelo::platform {
namespace {

// Hands a text to a script as a JSON string literal, never by pasting it into the code.
QString jsonLiteral(const std::string &text) {
    const QByteArray array =
        QJsonDocument(QJsonArray{QString::fromStdString(text)}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

class WebBrowser : public Browser {
  public:
    WebBrowser()
        : profile_(new QWebEngineProfile()), page_(new QWebEnginePage(profile_)),
          view_(new QWebEngineView()) {
        view_->setPage(page_);
        view_->setAttribute(Qt::WA_DeleteOnClose);
        view_->setWindowTitle(QStringLiteral("Korvalo"));
        // Once let go the window is the user's: closing it frees the page, then the profile,
        // which has to outlive its page.
        QWebEnginePage *page = page_;
        QWebEngineProfile *profile = profile_;
        QObject::connect(view_, &QObject::destroyed, profile, [page, profile] {
            delete page;
            profile->deleteLater();
        });
        QObject::connect(page_, &QWebEnginePage::loadStarted, view_, [this] { complete_ = false; });
        QObject::connect(page_, &QWebEnginePage::loadFinished, view_, [this] { complete_ = true; });
    }

    ~WebBrowser() override {
        // Letting go: the window stays, and so do the connections that look at this object.
        QObject::disconnect(page_, &QWebEnginePage::loadStarted, view_, nullptr);
        QObject::disconnect(page_, &QWebEnginePage::loadFinished, view_, nullptr);
    }

    void Navigate(const std::string &url) override {
        complete_ = false;
        view_->setUrl(QUrl(QString::fromStdString(url)));
    }

    int ReadyState() override { return complete_ ? ReadyStateComplete : 1; }

    void Sleep(int milliseconds) override {
        const BrowserWait blocking;
        QEventLoop wait;
        QTimer::singleShot(milliseconds, &wait, &QEventLoop::quit);
        wait.exec(QEventLoop::ExcludeUserInputEvents);
    }

    void SetFirstFormField(const std::string &field, const std::string &value) override {
        run(QStringLiteral("(function(name, value) { var form = document.forms[0];"
                           " if (!form || !form.elements[name]) return false;"
                           " form.elements[name].value = value; return true; })(%1, %2)")
                .arg(jsonLiteral(field), jsonLiteral(value)));
    }

    void SubmitFirstForm() override {
        run(QStringLiteral("(function() { var form = document.forms[0]; if (!form) return false;"
                           " HTMLFormElement.prototype.submit.call(form); return true; })()"));
    }

    void SetLoginFormField(const std::string &field, const std::string &value) override {
        run(QStringLiteral("(function(name, value) { var form = document.forms['Login'];"
                           " if (!form || !form.elements[name]) return false;"
                           " form.elements[name].value = value; return true; })(%1, %2)")
                .arg(jsonLiteral(field), jsonLiteral(value)));
    }

    void SubmitLoginForm() override {
        run(QStringLiteral("(function() { var form = document.forms['Login'];"
                           " if (!form) return false;"
                           " HTMLFormElement.prototype.submit.call(form); return true; })()"));
    }

    void ShowMaximized() override { view_->showMaximized(); }
    void SetVisible() override { view_->setVisible(true); }
    void BringToFront() override {
        view_->raise();
        view_->activateWindow();
    }

  private:
    // Runs a script that answers whether the page had what it needed; a page without it is
    // the run time's "object doesn't support this property or method".
    void run(const QString &script) {
        const BrowserWait blocking;
        QEventLoop wait;
        bool found = false;
        page_->runJavaScript(script, [&](const QVariant &answer) {
            found = answer.toBool();
            wait.quit();
        });
        wait.exec(QEventLoop::ExcludeUserInputEvents);
        if (!found) {
            runtime::raise(runtime::NotSupportedByObject);
        }
    }

    QWebEngineProfile *profile_;
    QWebEnginePage *page_;
    QWebEngineView *view_;
    bool complete_ = false;
};

} // namespace

void installWebBrowser() {
    setBrowserFactory([] { return std::make_unique<WebBrowser>(); });
}

} // namespace mirelo::platform

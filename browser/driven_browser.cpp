#include "driven_browser.h"

#include "platform/browser_protocol.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonValue>
#include <QUrl>
#include <QWebEngineSettings>

namespace mirelo::browser {
namespace {

namespace protocol = platform::browser_protocol;

constexpr int ReadyStateLoading = 1;

// A load the service or the way to it refused; not one that a new one replaced.
bool unreachable(const QWebEngineLoadingInfo &load) {
    switch (load.errorDomain()) {
    case QWebEngineLoadingInfo::ConnectionErrorDomain:
    case QWebEngineLoadingInfo::DnsErrorDomain:
    case QWebEngineLoadingInfo::CertificateErrorDomain:
    case QWebEngineLoadingInfo::HttpErrorDomain:
    case QWebEngineLoadingInfo::HttpStatusCodeDomain:
        return true;
    default:
        return false;
    }
}
constexpr int ReadyStateComplete = 4;

} // namespace

DrivenBrowser::DrivenBrowser(const QString &channel) {
    view_.setPage(&page_);
    view_.setWindowTitle(QStringLiteral("Korvalo"));
    // A page that can't be had is told in Swedish by a page of our own, not the engine's.
    page_.settings()->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    connect(&page_, &QWebEnginePage::loadingChanged, this,
            [this](const QWebEngineLoadingInfo &load) {
                if (load.status() == QWebEngineLoadingInfo::LoadStartedStatus) {
                    complete_ = false;
                } else if (load.status() == QWebEngineLoadingInfo::LoadFailedStatus &&
                           unreachable(load)) {
                    // Complete only when the page of our own has come.
                    showUnreachablePage(load);
                } else {
                    complete_ = true;
                }
            });
    connect(&socket_, &QLocalSocket::readyRead, this, &DrivenBrowser::readRequests);
    connect(&socket_, &QLocalSocket::disconnected, this, &DrivenBrowser::letGo);
    socket_.connectToServer(channel);
    socket_.waitForConnected();
}

void DrivenBrowser::showUnreachablePage(const QWebEngineLoadingInfo &failure) {
    const QString reason =
        failure.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain
            ? QStringLiteral("Tjänsten svarade med felkod %1.").arg(failure.errorCode())
            : QStringLiteral("Tjänsten kan inte nås just nu.");
    page_.setHtml(QStringLiteral("<!DOCTYPE html><html lang=\"sv\"><head><meta charset=\"utf-8\">"
                                 "<title>Korvalo kan inte visas</title></head><body>"
                                 "<h1>Sidan kan inte visas</h1><p>%1</p><p>Kontrollera "
                                 "internetförbindelsen och försök igen från Mirelo.</p>"
                                 "</body></html>")
                      .arg(reason),
                  failure.url());
}

void DrivenBrowser::readRequests() {
    while (!answerPending_ && socket_.canReadLine()) {
        const QJsonDocument request = QJsonDocument::fromJson(socket_.readLine());
        answerPending_ = true;
        handle(request.object());
    }
}

void DrivenBrowser::handle(const QJsonObject &request) {
    const QString step = request.value(protocol::Step).toString();
    if (step == protocol::Navigate) {
        complete_ = false;
        view_.setUrl(QUrl(request.value(protocol::Url).toString()));
        answer({});
    } else if (step == protocol::ReadyState) {
        answer({{protocol::ReadyState, complete_ ? ReadyStateComplete : ReadyStateLoading}});
    } else if (step == protocol::Script) {
        page_.runJavaScript(request.value(protocol::Script).toString(),
                            [this](const QVariant &value) {
                                answer({{protocol::Value, QJsonValue::fromVariant(value)}});
                            });
    } else if (step == protocol::ShowMaximized) {
        shown_ = true;
        view_.showMaximized();
        answer({});
    } else if (step == protocol::Show) {
        shown_ = true;
        view_.setVisible(true);
        answer({});
    } else if (step == protocol::Activate) {
        view_.raise();
        view_.activateWindow();
        answer({});
    } else if (step == protocol::Status) {
        answer(status());
    } else {
        answer({{protocol::Ok, false}});
    }
}

void DrivenBrowser::answer(QJsonObject reply) {
    if (!reply.contains(protocol::Ok)) {
        reply.insert(protocol::Ok, true);
    }
    socket_.write(QJsonDocument(reply).toJson(QJsonDocument::Compact) + '\n');
    socket_.flush();
    answerPending_ = false;
    readRequests();
}

QJsonObject DrivenBrowser::status() const {
    return {{protocol::Visible, view_.isVisible()},
            {protocol::Maximized, view_.windowState().testFlag(Qt::WindowMaximized)},
            {protocol::OffTheRecord, profile_.isOffTheRecord()}};
}

void DrivenBrowser::letGo() {
    // A window the user has seen is theirs now, and ends when they close it. One that was
    // never shown can't be seen or closed by anyone.
    if (!shown_) {
        QApplication::quit();
    }
}

} // namespace mirelo::browser

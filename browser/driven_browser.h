#pragma once

#include <QJsonObject>
#include <QLocalSocket>
#include <QObject>
#include <QWebEngineLoadingInfo>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace mirelo::browser {

// The browser window Mirelo hands the user over to: a page in a fresh off-the-record profile,
// so nothing is kept on disk, driven step by step over the channel until Mirelo lets go.
class DrivenBrowser : public QObject {
  public:
    explicit DrivenBrowser(const QString &channel);

    // Whether the channel was reached; without it there is nothing to do.
    bool connected() const { return socket_.state() == QLocalSocket::ConnectedState; }

  private:
    void readRequests();
    // Calls answer with the answer to the request; a script's answer comes when it has run.
    void handle(const QJsonObject &request);
    void answer(QJsonObject reply);
    QJsonObject status() const;
    void letGo();
    void showUnreachablePage(const QWebEngineLoadingInfo &failure);

    // The profile is declared first so that it outlives its page.
    QWebEngineProfile profile_;
    QWebEnginePage page_{&profile_};
    QWebEngineView view_;
    QLocalSocket socket_;
    bool complete_ = false;
    bool answerPending_ = false;
    bool shown_ = false;
};

} // namespace mirelo::browser

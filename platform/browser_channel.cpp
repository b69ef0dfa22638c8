#include "platform/browser_channel.h"

#include "platform/browser.h"
#include "platform/browser_protocol.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QProcess>
#include <QTimer>
#include <QUuid>
#include <fstream>
#include <string>

namespace mirelo::platform {
namespace {

// A browser that dies unseen sends nothing; its end is noticed by looking now and then.
constexpr int LivenessCheckMilliseconds = 100;

} // namespace

bool processRunning(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (pid <= 0 || !std::getline(stat, line)) {
        return false;
    }
    const std::size_t end = line.rfind(')');
    return end != std::string::npos && end + 2 < line.size() && line[end + 2] != 'Z' &&
           line[end + 2] != 'X';
}

BrowserChannel::BrowserChannel(const std::string &executable) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    const QString name =
        QStringLiteral("mirelo-browser-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
    if (!server_.listen(name)) {
        return;
    }
    qint64 pid = 0;
    if (!QProcess::startDetached(
            QString::fromStdString(executable),
            {QString::fromLatin1(browser_protocol::ChannelOption), server_.fullServerName()},
            QString(), &pid)) {
        return;
    }
    pid_ = static_cast<pid_t>(pid);
    waitUntil([this] { return server_.hasPendingConnections(); });
    socket_.reset(server_.nextPendingConnection());
    if (socket_) {
        // Taken out of the server's hands: the channel lives exactly as long as this object.
        socket_->setParent(nullptr);
    }
    // One browser per channel: nobody else gets in.
    server_.close();
}

BrowserChannel::~BrowserChannel() {
    if (socket_) {
        socket_->abort();
    }
}

std::optional<QJsonObject> BrowserChannel::ask(const QJsonObject &request) {
    if (!socket_ || socket_->state() != QLocalSocket::ConnectedState) {
        return std::nullopt;
    }
    socket_->write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    waitUntil([this] {
        return socket_->canReadLine() || socket_->state() != QLocalSocket::ConnectedState;
    });
    if (!socket_->canReadLine()) {
        return std::nullopt;
    }
    const QJsonDocument answer = QJsonDocument::fromJson(socket_->readLine());
    if (!answer.isObject()) {
        return std::nullopt;
    }
    return answer.object();
}

template <typename Done> void BrowserChannel::waitUntil(Done done) {
    const BrowserWait blocking;
    QEventLoop loop;
    const auto check = [&] {
        if (done() || !processRunning(pid_)) {
            loop.quit();
        }
    };
    QTimer liveness;
    QObject::connect(&liveness, &QTimer::timeout, &loop, check);
    QObject::connect(&server_, &QLocalServer::newConnection, &loop, check);
    if (socket_) {
        QObject::connect(socket_.get(), &QLocalSocket::readyRead, &loop, check);
        QObject::connect(socket_.get(), &QLocalSocket::disconnected, &loop, check);
    }
    if (done() || !processRunning(pid_)) {
        return;
    }
    liveness.start(LivenessCheckMilliseconds);
    loop.exec();
}

} // namespace mirelo::platform

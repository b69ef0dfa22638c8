#pragma once

#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace mirelo::platform {

// One browser process and Mirelo's end of its channel (see browser_protocol.h). The browser
// is started detached, so it outlives this object and Mirelo alike; destroying the channel
// only closes it. Every wait runs a local event loop as a BrowserWait, which drops the user's
// input.
class BrowserChannel {
  public:
    // Starts the browser executable and waits until it has connected, or has ended.
    explicit BrowserChannel(const std::string &executable);
    ~BrowserChannel();
    BrowserChannel(const BrowserChannel &) = delete;
    BrowserChannel &operator=(const BrowserChannel &) = delete;

    // The answer to one request, or nothing when the browser never came or is gone.
    std::optional<QJsonObject> ask(const QJsonObject &request);

    // The browser's process; 0 if it could not be started.
    pid_t pid() const { return pid_; }

  private:
    // Runs events, the user's input dropped, until done() holds or the browser has ended.
    template <typename Done> void waitUntil(Done done);

    QLocalServer server_;
    std::unique_ptr<QLocalSocket> socket_;
    pid_t pid_ = 0;
};

// Whether a process runs. A browser is nobody's child once detached, so this is read from the
// process table; one that has ended but not yet been reaped counts as ended.
bool processRunning(pid_t pid);

} // namespace mirelo::platform

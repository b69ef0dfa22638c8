#pragma once

#include "platform/browser_channel.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace mirelo::testing {

// The build's browser executable.
std::string browserExecutable();

// Makes the hand-offs of a test start the real browser executable. The test keeps a hold on
// every channel, so after a hand-off has let go it can still ask how the browser's window
// stands and act in its page as the physician would. Every browser started ends with this
// object.
class BrowserProcesses {
  public:
    BrowserProcesses();
    ~BrowserProcesses();
    BrowserProcesses(const BrowserProcesses &) = delete;
    BrowserProcesses &operator=(const BrowserProcesses &) = delete;

    std::size_t started() const { return channels_.size(); }
    // The window of the browser started as number index: visible, maximized, offTheRecord.
    QJsonObject status(std::size_t index);
    // Runs a script in that browser's page and gives its value.
    QJsonValue script(std::size_t index, const QString &script);

  private:
    QJsonObject ask(std::size_t index, const QJsonObject &request);

    std::vector<std::shared_ptr<platform::BrowserChannel>> channels_;
};

// Ends a browser process the test started, with whatever it has started itself.
void endBrowserProcess(pid_t pid);

} // namespace mirelo::testing

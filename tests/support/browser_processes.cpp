#include "browser_processes.h"

#include "platform/browser.h"
#include "platform/browser_protocol.h"
#include "platform/process_browser.h"

#include <csignal>
#include <gtest/gtest.h>

namespace mirelo::testing {

namespace protocol = platform::browser_protocol;

std::string browserExecutable() {
    return MIRELO_BROWSER_BINARY;
}

BrowserProcesses::BrowserProcesses() {
    platform::setBrowserFactory([this] {
        channels_.push_back(std::make_shared<platform::BrowserChannel>(browserExecutable()));
        return platform::makeProcessBrowser(channels_.back());
    });
}

BrowserProcesses::~BrowserProcesses() {
    platform::setBrowserFactory({});
    for (const auto &channel : channels_) {
        endBrowserProcess(channel->pid());
    }
}

QJsonObject BrowserProcesses::status(std::size_t index) {
    return ask(index, {{protocol::Step, protocol::Status}});
}

QJsonValue BrowserProcesses::script(std::size_t index, const QString &script) {
    return ask(index, {{protocol::Step, protocol::Script}, {protocol::Script, script}})
        .value(protocol::Value);
}

QJsonObject BrowserProcesses::ask(std::size_t index, const QJsonObject &request) {
    if (index >= channels_.size()) {
        ADD_FAILURE() << "no browser number " << index;
        return {};
    }
    const std::optional<QJsonObject> answer = channels_[index]->ask(request);
    if (!answer) {
        ADD_FAILURE() << "the browser is gone";
        return {};
    }
    return *answer;
}

void endBrowserProcess(pid_t pid) {
    // The browser's own helper processes end when it does.
    if (pid > 0) {
        ::kill(pid, SIGKILL);
    }
}

} // namespace mirelo::testing

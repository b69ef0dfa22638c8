#include "korvalo_process.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <unistd.h>

namespace mirelo::testing {
namespace {

// Starts the service with its standard output and error on one channel.
void start(QProcess &process, const std::vector<std::string> &arguments) {
    if (std::string(MIRELO_KORVALO_BINARY).empty()) {
        throw std::runtime_error("korvalo can't be started in this build");
    }
    QStringList words;
    for (const std::string &word : arguments) {
        words << QString::fromStdString(word);
    }
    process.setProcessChannelMode(QProcess::MergedChannels);
    // A test that dies takes its service with it.
    process.setChildProcessModifier([parent = getpid()] {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) {
            _exit(127);
        }
    });
    process.start(MIRELO_KORVALO_BINARY, words);
}

// Waits for the process to end by itself; then whether it did so with status 0.
bool endedCleanly(QProcess &process) {
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

KorvaloProcess::KorvaloProcess(const std::vector<std::string> &arguments) {
    std::vector<std::string> words{"--port", "0"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    start(process_, words);
    // The port is the first line; a service that ends before it has failed to start.
    while (!process_.canReadLine() && process_.waitForReadyRead(-1)) {
    }
    output_ = process_.readLine().toStdString();
    try {
        port_ = std::stoi(output_);
    } catch (const std::exception &) {
        stop();
        throw std::runtime_error("korvalo did not start: " + output_);
    }
}

KorvaloProcess::~KorvaloProcess() {
    stop();
}

std::string KorvaloProcess::baseUrl() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

bool KorvaloProcess::stop() {
    if (!stopped_) {
        stopped_ = true;
        process_.terminate();
        cleanExit_ = endedCleanly(process_);
        output_ += process_.readAll().toStdString();
    }
    return cleanExit_;
}

KorvaloRun RunKorvaloToEnd(const std::vector<std::string> &arguments) {
    QProcess process;
    start(process, arguments);
    const bool clean = endedCleanly(process);
    return {clean, process.readAll().toStdString()};
}

} // namespace mirelo::testing

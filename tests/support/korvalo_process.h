#pragma once

#include <QProcess>
#include <string>
#include <vector>

namespace mirelo::testing {

// The stand-in service as a child process on 127.0.0.1 and a free port, started with the
// given arguments and stopped with SIGTERM. Its standard output and error are captured, so a
// test can read everything it printed.
class KorvaloProcess {
  public:
    explicit KorvaloProcess(const std::vector<std::string> &arguments = {});
    ~KorvaloProcess();

    // "http://127.0.0.1:" and the port: what a settings file's Server holds.
    std::string baseUrl() const;

    // Sends SIGTERM and waits. Gives whether the service ended by itself with status 0.
    bool stop();
    // Everything the process printed on both streams; complete once it has stopped.
    const std::string &output() const { return output_; }

  private:
    QProcess process_;
    int port_ = 0;
    bool stopped_ = false, cleanExit_ = false;
    std::string output_;
};

// A run of the service that ends by itself, such as the one that drops sample messages.
struct KorvaloRun {
    bool cleanExit = false;
    std::string output;
};
KorvaloRun RunKorvaloToEnd(const std::vector<std::string> &arguments);

} // namespace mirelo::testing

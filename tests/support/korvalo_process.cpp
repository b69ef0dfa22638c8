#include "korvalo_process.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mirelo::testing {
namespace {

struct Child {
    pid_t pid = -1;
    int output = -1;
};

// Starts the service with its standard output and error on one pipe, so it can never stall
// on a full one that isn't read.
Child spawn(const std::vector<std::string> &arguments) {
    const std::string binary = MIRELO_KORVALO_BINARY;
    if (binary.empty()) {
        throw std::runtime_error("the korvalo executable is not part of this build");
    }
    std::vector<std::string> words{binary};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    int out[2];
    if (pipe(out) != 0) {
        throw std::runtime_error("no pipe for korvalo");
    }
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        // A test that dies takes its service with it.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent) {
            _exit(127);
        }
        dup2(out[1], STDOUT_FILENO);
        dup2(out[1], STDERR_FILENO);
        close(out[0]);
        close(out[1]);
        execv(binary.c_str(), argv.data());
        _exit(127);
    }
    close(out[1]);
    return {pid, out[0]};
}

// Everything still to come from a pipe, up to the end of the stream.
std::string drain(int descriptor) {
    std::string text;
    char buffer[4096];
    ssize_t got = 0;
    while ((got = read(descriptor, buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<size_t>(got));
    }
    return text;
}

bool waitForCleanExit(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

KorvaloProcess::KorvaloProcess(const std::vector<std::string> &arguments) {
    std::vector<std::string> words{"--port", "0"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Child child = spawn(words);
    pid_ = child.pid;
    outputPipe_ = child.output;

    // The port is the first line; a service that ends before it has failed to start.
    std::string firstLine;
    char c = 0;
    while (read(outputPipe_, &c, 1) == 1 && c != '\n') {
        firstLine += c;
    }
    output_ = firstLine + "\n";
    try {
        port_ = std::stoi(firstLine);
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
    if (stopped_) {
        return cleanExit_;
    }
    stopped_ = true;
    kill(pid_, SIGTERM);
    output_ += drain(outputPipe_);
    close(outputPipe_);
    cleanExit_ = waitForCleanExit(pid_);
    return cleanExit_;
}

KorvaloRun RunKorvaloToEnd(const std::vector<std::string> &arguments) {
    const Child child = spawn(arguments);
    KorvaloRun run;
    run.output = drain(child.output);
    close(child.output);
    run.cleanExit = waitForCleanExit(child.pid);
    return run;
}

} // namespace mirelo::testing

#include "korvalo_process.h"

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mirelo::testing {
namespace {

// Starts the service with its standard output and error on one pipe, so it can never stall on a
// full one that isn't read; gives the end of the pipe to read.
pid_t spawn(std::vector<std::string> words, int &output) {
    words.insert(words.begin(), MIRELO_KORVALO_BINARY);
    std::vector<char *> argv;
    for (std::string &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    int out[2];
    if (words[0].empty() || pipe(out) != 0) {
        throw std::runtime_error("korvalo can't be started in this build");
    }
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        // A test that dies takes its service with it.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() == parent) {
            dup2(out[1], STDOUT_FILENO);
            dup2(out[1], STDERR_FILENO);
            close(out[0]);
            close(out[1]);
            execv(argv[0], argv.data());
        }
        _exit(127);
    }
    close(out[1]);
    output = out[0];
    return pid;
}

// Everything still to come from the pipe, which is closed at its end; then whether the process
// ended by itself with status 0.
bool drainAndWait(pid_t pid, int output, std::string &text) {
    char buffer[4096];
    for (ssize_t got = 0; (got = read(output, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<size_t>(got));
    }
    close(output);
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

KorvaloProcess::KorvaloProcess(const std::vector<std::string> &arguments) {
    std::vector<std::string> words{"--port", "0"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    pid_ = spawn(words, outputPipe_);
    // The port is the first line; a service that ends before it has failed to start.
    for (char c = 0; read(outputPipe_, &c, 1) == 1 && c != '\n';) {
        output_ += c;
    }
    try {
        port_ = std::stoi(output_);
    } catch (const std::exception &) {
        stop();
        throw std::runtime_error("korvalo did not start: " + output_);
    }
    output_ += "\n";
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
        kill(pid_, SIGTERM);
        cleanExit_ = drainAndWait(pid_, outputPipe_, output_);
    }
    return cleanExit_;
}

KorvaloRun RunKorvaloToEnd(const std::vector<std::string> &arguments) {
    KorvaloRun run;
    int output = -1;
    const pid_t pid = spawn(arguments, output);
    run.cleanExit = drainAndWait(pid, output, run.output);
    return run;
}

} // namespace mirelo::testing

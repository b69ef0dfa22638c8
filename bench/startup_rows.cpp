#include "bench_data.h"
#include "korvalo_process.h"
#include "rows.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace fs = std::filesystem;

namespace mirelo::bench {
namespace {

// What one start of a program under the probe reported.
struct StartReport {
    double secondsToWindow = 0;
    double loginKilobytes = 0;
    std::optional<double> searchKilobytes;
};

// A program started under the offscreen platform with the probe loaded, its standard error
// read line by line until the probe has said what is wanted; then the program is killed.
class ProbedProgram {
  public:
    ProbedProgram(const std::string &program, const std::string &probeFolder) {
        std::vector<std::string> environment;
        for (char **entry = environ; *entry != nullptr; ++entry) {
            environment.emplace_back(*entry);
        }
        environment.push_back("QT_QPA_PLATFORM=offscreen");
        environment.push_back("QT_QPA_GENERIC_PLUGINS=mirelo_startup_probe");
        environment.push_back("QT_PLUGIN_PATH=" + probeFolder);
        std::vector<char *> envp;
        for (std::string &entry : environment) {
            envp.push_back(entry.data());
        }
        envp.push_back(nullptr);
        std::string path = program;
        char *argv[] = {path.data(), nullptr};

        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0) {
            throw std::runtime_error("no pipe");
        }
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(pipeEnds[1], STDERR_FILENO);
            const int nothing = ::open("/dev/null", O_WRONLY);
            ::dup2(nothing, STDOUT_FILENO);
            ::close(pipeEnds[0]);
            ::execve(path.c_str(), argv, envp.data());
            ::_exit(127);
        }
        ::close(pipeEnds[1]);
        output_ = pipeEnds[0];
    }
    ~ProbedProgram() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        ::close(output_);
    }
    ProbedProgram(const ProbedProgram &) = delete;
    ProbedProgram &operator=(const ProbedProgram &) = delete;

    // The text after "probe: <what> " on the line that says it; fails after a minute.
    std::string awaitReport(const std::string &what) {
        const std::string prefix = "probe: " + what + " ";
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        for (;;) {
            for (size_t end; (end = pending_.find('\n')) != std::string::npos;) {
                const std::string line = pending_.substr(0, end);
                pending_.erase(0, end + 1);
                if (line.rfind(prefix, 0) == 0) {
                    return line.substr(prefix.size());
                }
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            pollfd waiting{output_, POLLIN, 0};
            if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) <= 0) {
                throw std::runtime_error("no report \"" + what + "\" from the program");
            }
            char chunk[4096];
            const ssize_t read = ::read(output_, chunk, sizeof chunk);
            if (read <= 0) {
                throw std::runtime_error("the program ended before reporting \"" + what +
                                         "\": " + pending_);
            }
            pending_.append(chunk, static_cast<size_t>(read));
        }
    }

  private:
    pid_t pid_ = -1;
    int output_ = -1;
    std::string pending_;
};

StartReport startOnce(const std::string &program, const std::string &probeFolder,
                      bool toSearchScreen) {
    StartReport report;
    const auto start = std::chrono::steady_clock::now();
    ProbedProgram running(program, probeFolder);
    running.awaitReport("shown");
    report.secondsToWindow =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.loginKilobytes = std::stod(running.awaitReport("login-rss"));
    if (toSearchScreen) {
        report.searchKilobytes = std::stod(running.awaitReport("search-rss"));
    }
    return report;
}

// Mirelo laid out as an installation beside its in/ and data/, its settings pointing at the
// stand-in service, so the probe's login reaches the search screen.
class MireloInstallation {
  public:
    MireloInstallation(const std::string &binary, const std::string &server) {
        fs::copy_file(binary, installation_.directory() + "/mirelo");
        fs::create_directory(installation_.directory() + "/System");
        writeFile(installation_.directory() + "/System/Settings.xml",
                  "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Settings>\r\n"
                  "\t<Username></Username>\r\n\t<SaveUsername>0</SaveUsername>\r\n"
                  "\t<DataPath>" +
                      installation_.data() + "</DataPath>\r\n\t<Server>" + server +
                      "</Server>\r\n\t<LoginUrl>/Public/Mirelo/Login.aspx</LoginUrl>\r\n"
                      "\t<InitXmlUrl>/Public/Mirelo/InitXML.aspx</InitXmlUrl>\r\n</Settings>\r\n");
    }
    std::string program() const { return installation_.directory() + "/mirelo"; }

  private:
    BenchInstallation installation_;
};

std::string megabytes(double kilobytes) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f MiB", kilobytes / 1024);
    return text;
}

} // namespace

std::vector<Row> startupRows(const Effort &effort, const StartupPrograms &programs) {
    testing::KorvaloProcess korvalo;
    const MireloInstallation mirelo(programs.mirelo, korvalo.baseUrl());
    std::vector<double> mireloStart, helloStart, login, search, hello;
    for (int run = 0; run < effort.runs(5); ++run) {
        const StartReport ours = startOnce(mirelo.program(), programs.probePluginFolder, true);
        const StartReport plain = startOnce(programs.helloWorld, programs.probePluginFolder, false);
        mireloStart.push_back(ours.secondsToWindow);
        login.push_back(ours.loginKilobytes);
        search.push_back(*ours.searchKilobytes);
        helloStart.push_back(plain.secondsToWindow);
        hello.push_back(plain.loginKilobytes);
    }
    const double helloMemory = median(hello);
    return {
        {"start-up to the login window", milliseconds(median(mireloStart)),
         milliseconds(median(helloStart)), ratioText(median(mireloStart), median(helloStart)),
         "<= 2x"},
        {"memory at the login screen", megabytes(median(login)), megabytes(helloMemory),
         ratioText(median(login), helloMemory), "<= 2x"},
        {"memory at the search screen", megabytes(median(search)), megabytes(helloMemory),
         ratioText(median(search), helloMemory), "<= 2x"},
    };
}

} // namespace mirelo::bench

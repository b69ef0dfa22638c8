#include "closed_port.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/settings_store.h"
#include "exchange/login_exchange.h"
#include "intake/inbox_scan.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "records/medical_list_update.h"
#include "records/medication_view_interaction.h"
#include "records/note_records.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sched.h>
#include <set>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace mirelo;
using mirelo::testing::readBytes;

namespace {

namespace fs = std::filesystem;
using mirelo::testing::filesIn;

const std::string Pnr = "191212121212";

enum class Fault { FileSizeLimit, FullDisk, ReadOnlyFile };

// One place that writes a whole file, as the user meets it: what is there before, the step with
// the box its screen shows on a failure, and the box for a failure described so.
struct WriteSite {
    std::string name;
    // The folder of the file written and the file itself ("" when the write creates it).
    std::string folder;
    std::string file;
    std::function<void()> prepare;
    std::function<void()> step;
    std::function<std::string(const std::string &description)> box;
    bool endsProcess = false;
    // What else the failure is to leave as it was, in words.
    std::function<std::string()> state = [] { return std::string(); };
};

// What fills the full disk beyond the old files and the room given; not a file of the program.
const std::string Ballast = "ballast";

// Every write of a whole file either lands whole or leaves the old file byte for byte, with
// the box of its failure, the message still in the inbox and no stray file beside it.
class FailedWriteTest : public mirelo::testing::ApplicationTest {
  protected:
    // Runs the step in a child process under the fault and gives what the user and the folders
    // show afterwards, one line each. The child's view is the one that counts: a full disk is a
    // file system of the child's own.
    std::string underFault(Fault fault, const WriteSite &site) {
        int channel[2];
        EXPECT_EQ(::pipe(channel), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(channel[0]);
            const std::string report = faultedStep(fault, site);
            ::write(channel[1], report.data(), report.size());
            ::_exit(0);
        }
        ::close(channel[1]);
        std::string report;
        char chunk[512];
        for (ssize_t read = 0; (read = ::read(channel[0], chunk, sizeof chunk)) > 0;) {
            report.append(chunk, static_cast<size_t>(read));
        }
        ::close(channel[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        return report;
    }

    // What a person sees after a failed write: the box, whether the program ended, the files of
    // the written file's folder as they stand against `before`, and the inbox.
    std::string outcome(const WriteSite &site, const std::map<std::string, std::string> &before) {
        const std::string &folder = site.folder;
        std::string said = site.state();
        for (const platform::MsgBoxRequest &box : boxes) {
            said += "box: " + box.text + "\n";
        }
        if (processEnded) {
            said += "the process ended\n";
        }
        for (const std::string &name : filesIn(path(folder))) {
            if (name == Ballast) {
                continue;
            }
            const auto old = before.find(name);
            said += folder + "/" + name +
                    (old == before.end()                                   ? " is new\n"
                     : old->second == readBytes(path(folder + "/" + name)) ? " as it was\n"
                                                                           : " changed\n");
        }
        for (const std::string &name : filesIn(path("in"))) {
            said += "in/" + name + "\n";
        }
        return said;
    }

  private:
    std::string faultedStep(Fault fault, const WriteSite &site) {
        std::map<std::string, std::string> before;
        for (const std::string &name : filesIn(path(site.folder))) {
            before[name] = readBytes(path(site.folder + "/" + name));
        }
        const size_t written = site.file.empty() ? 64 : before.at(site.file).size();
        switch (fault) {
        case Fault::FileSizeLimit: {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit size{written / 2, written / 2};
            ::setrlimit(RLIMIT_FSIZE, &size);
            break;
        }
        case Fault::FullDisk:
            // The new bytes go to a new file beside the old one, so /dev/full can't stand in
            // for the disk; a file system that is really full can: a small tmpfs over the
            // folder, mounted in a mount namespace of this child alone, holding the old files
            // and room for half the new one, the rest of it taken by ballast.
            if (const std::string refused = mountFullFolder(site.folder, before, written / 2);
                !refused.empty()) {
                return "no full disk here: " + refused;
            }
            break;
        case Fault::ReadOnlyFile:
            fs::permissions(path(site.folder + "/" + site.file), fs::perms::owner_write,
                            fs::perm_options::remove);
            break;
        }
        try {
            site.step();
        } catch (...) {
        }
        return outcome(site, before);
    }

    std::string mountFullFolder(const std::string &folder,
                                const std::map<std::string, std::string> &files, size_t room) {
        const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
        // A tmpfs is at least a page, and a size of 0 would be no limit at all.
        size_t size = room / page * page + page;
        for (const auto &[name, bytes] : files) {
            size += (bytes.size() + page - 1) / page * page;
        }
        const std::string target = path(folder);
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", target.c_str(), "tmpfs", 0,
                    ("size=" + std::to_string(size)).c_str()) != 0) {
            return std::strerror(errno);
        }
        mirelo::testing::writeBytes(target + "/" + Ballast, std::string(page, 'b'));
        for (const auto &[name, bytes] : files) {
            mirelo::testing::writeBytes(target + "/" + name, bytes);
        }
        return {};
    }
};

std::vector<mirelo::testing::ProductFields> manyProducts() {
    std::vector<mirelo::testing::ProductFields> products(300);
    for (size_t i = 0; i < products.size(); ++i) {
        products[i].id = "S_" + std::to_string(i);
        products[i].regNr = std::to_string(200000 + i);
    }
    return products;
}

void storeLargePatient() {
    mirelo::testing::storePatientFile(
        Pnr + ".xml", mirelo::testing::patientText(Pnr, "Ek", "Eva", manyProducts()));
}

// The screens' handlers: the failure is shown in the box the screen shows.
std::function<void()> showing(const std::function<void()> &step,
                              const std::function<void(const MireloError &)> &show) {
    return [step, show] {
        try {
            step();
        } catch (const MireloError &error) {
            show(error);
        }
    };
}

TEST_F(FailedWriteTest, every_whole_file_write_that_fails_leaves_the_old_file) {
    const std::string closedServer = mirelo::testing::ClosedPort().baseUrl();
    const auto writeSettings = [this, closedServer] {
        mirelo::testing::SettingsFields settings;
        settings.dataPath = appDir() + "/data/";
        settings.server = closedServer;
        mirelo::testing::writeSettingsFile(settings);
    };
    const auto plainBox = [](const std::string &description) { return description; };
    const std::vector<WriteSite> sites = {
        {"a message taken into the patient's file", "data", Pnr + ".xml",
         [this] {
             storeLargePatient();
             mirelo::testing::PrescriptionMessage message;
             message.items = {mirelo::testing::MessageItem{}};
             mirelo::testing::writePrescriptionMessage(path("in/m.xml"), message);
         },
         [] {
             InboxTimer timer;
             for (int tick = 0; tick < 10; ++tick) {
                 timer.Timer1_Timer([] { return false; }, [] {});
             }
         },
         plainBox, true},
        {"a product taken out", "data", Pnr + ".xml", storeLargePatient,
         showing([] { updateMedicalList("S_7", Pnr); },
                 [](const MireloError &error) {
                     const platform::MsgBoxRequest box = MouseDownFailureBox(error);
                     platform::MsgBox(box.text, box.buttons, box.icon, box.title);
                 }),
         plainBox},
        {"the patient's general note", "data", Pnr + ".xml", storeLargePatient,
         showing(
             [] {
                 SaveGeneralInfo(Pnr, "Pollenallergi", "Dr Ek",
                                 {[](const std::string &) {}, [](const std::string &) {}});
             },
             ReportNoteFailure),
         [](const std::string &description) {
             return std::to_string(runtime::PermissionDenied) + " " + description;
         }},
        {"the settings file at a login", "System", "Settings.xml", writeSettings,
         [] {
             Login({"karin", "hemligt", true}, [] {});
         },
         [](const std::string &description) {
             return "Kontakta support och ange följande fel: " +
                    std::to_string(runtime::PermissionDenied) + " " + description;
         },
         true},
        {"the data folder chosen in the settings dialog", "System", "Settings.xml",
         [this, writeSettings] {
             writeSettings();
             fs::create_directories(path("other"));
         },
         showing([this] { SaveDataPath(path("other")); },
                 [](const MireloError &error) {
                     platform::MsgBox("Kontakta support och ange följande fel: " +
                                          std::to_string(error.number()) + " " +
                                          error.description(),
                                      platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop);
                 }),
         [](const std::string &description) {
             return "Kontakta support och ange följande fel: " +
                    std::to_string(runtime::PermissionDenied) + " " + description;
         },
         false, [] { return "data folder " + session().gDataPath + "\n"; }},
        {"the settings file at the first start", "System", "",
         [this] { fs::create_directory(path("System")); },
         showing(
             [] {
                 LoginScreenState screen;
                 CheckSettingsFile(screen);
             },
             [](const MireloError &error) { platform::MsgBox(StartupFailureText(error)); }),
         [](const std::string &description) {
             return description + " " + std::to_string(runtime::PermissionDenied);
         }},
    };
    const std::string denied = runtime::description(runtime::PermissionDenied);
    const std::vector<std::pair<Fault, std::string>> faults = {
        {Fault::FileSizeLimit, denied + " (File too large)"},
        {Fault::FullDisk, denied + " (No space left on device)"},
        {Fault::ReadOnlyFile, denied},
    };

    for (const WriteSite &site : sites) {
        for (const auto &[fault, description] : faults) {
            if (fault == Fault::ReadOnlyFile && site.file.empty()) {
                continue;
            }
            SCOPED_TRACE(site.name + ", fault " + std::to_string(static_cast<int>(fault)));
            fs::remove_all(path("System"));
            fs::remove_all(path("Error"));
            for (const char *folder : {"in", "data"}) {
                fs::remove_all(path(folder));
                fs::create_directory(path(folder));
            }
            site.prepare();
            std::string expected = site.state() + "box: " + site.box(description) + "\n";
            if (site.endsProcess) {
                expected += "the process ended\n";
            }
            if (!site.file.empty()) {
                expected += site.folder + "/" + site.file + " as it was\n";
            }
            for (const std::string &name : filesIn(path("in"))) {
                expected += "in/" + name + "\n";
            }

            const std::string report = underFault(fault, site);
            if (report.rfind("no full disk here", 0) == 0) {
                GTEST_SKIP() << report;
            }
            EXPECT_EQ(report, expected);
        }
    }
}

TEST_F(FailedWriteTest, a_file_written_whole_keeps_its_permission_bits) {
    storeLargePatient();
    const std::string file = path("data/" + Pnr + ".xml");
    const std::string before = readBytes(file);
    fs::permissions(file, fs::perms(0640));

    updateMedicalList("S_7", Pnr);
    EXPECT_NE(readBytes(file), before);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(filesIn(path("data")), std::set<std::string>{Pnr + ".xml"});
}

} // namespace

#include "core/mirelo_error.h"
#include "core/settings_store.h"
#include "intake/inbox_scan.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "settings_file_builder.h"
#include "test_environment.h"

#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace mirelo;
using mirelo::testing::readBytes;

namespace {

using mirelo::testing::filesIn;

// Every write of a whole file either lands whole or leaves the old file byte for byte, with
// the box of its failure and no stray file beside it.
class FailedWriteTest : public mirelo::testing::ApplicationTest {
  protected:
    // Runs the step in a child process whose files may grow to `limit` bytes at most, and
    // gives what the child's boxes said, one line each.
    std::string underFileSizeLimit(rlim_t limit, const std::function<void()> &step) {
        int channel[2];
        EXPECT_EQ(::pipe(channel), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close(channel[0]);
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit size{limit, limit};
            ::setrlimit(RLIMIT_FSIZE, &size);
            try {
                step();
            } catch (...) {
            }
            std::string said;
            for (const platform::MsgBoxRequest &box : boxes) {
                said += box.text + "\n";
            }
            ::write(channel[1], said.data(), said.size());
            ::_exit(0);
        }
        ::close(channel[1]);
        std::string said;
        char chunk[512];
        for (ssize_t read = 0; (read = ::read(channel[0], chunk, sizeof chunk)) > 0;) {
            said.append(chunk, static_cast<size_t>(read));
        }
        ::close(channel[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        return said;
    }

    void tickTen() {
        InboxTimer timer;
        for (int tick = 0; tick < 10; ++tick) {
            timer.Timer1_Timer([] { return false; }, [] {});
        }
    }
};

const std::string TooLarge =
    runtime::description(runtime::PermissionDenied) + " (File too large)\n";

TEST_F(FailedWriteTest, a_patient_file_cut_short_by_the_disk_stays_as_it_was) {
    std::vector<mirelo::testing::ProductFields> products(300);
    for (size_t i = 0; i < products.size(); ++i) {
        products[i].id = "S_" + std::to_string(i);
        products[i].regNr = std::to_string(200000 + i);
    }
    mirelo::testing::storePatientFile(
        "191212121212.xml", mirelo::testing::patientText("191212121212", "Ek", "Eva", products));
    const std::string before = readBytes(path("data/191212121212.xml"));
    mirelo::testing::PrescriptionMessage message;
    message.items = {mirelo::testing::MessageItem{}};
    mirelo::testing::writePrescriptionMessage(path("in/m.xml"), message);

    EXPECT_EQ(underFileSizeLimit(before.size() / 2, [this] { tickTen(); }), TooLarge);
    EXPECT_EQ(readBytes(path("data/191212121212.xml")), before);
    EXPECT_EQ(filesIn(path("data")), std::set<std::string>{"191212121212.xml"});
    EXPECT_EQ(filesIn(path("in")), std::set<std::string>{"m.xml"});

    // A file the user may not write is refused before anything is written.
    std::filesystem::permissions(path("data/191212121212.xml"), std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::remove);
    EXPECT_THROW(tickTen(), mirelo::testing::ProcessEnded);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, runtime::description(runtime::PermissionDenied));
    EXPECT_EQ(readBytes(path("data/191212121212.xml")), before);
    EXPECT_EQ(filesIn(path("in")), std::set<std::string>{"m.xml"});

    // Written whole, the new file keeps the old one's permission bits.
    std::filesystem::permissions(path("data/191212121212.xml"), std::filesystem::perms(0640));
    tickTen();
    EXPECT_NE(readBytes(path("data/191212121212.xml")), before);
    EXPECT_EQ(std::filesystem::status(path("data/191212121212.xml")).permissions(),
              std::filesystem::perms(0640));
    EXPECT_EQ(filesIn(path("data")), std::set<std::string>{"191212121212.xml"});
}

TEST_F(FailedWriteTest, a_settings_file_cut_short_stays_as_it_was) {
    mirelo::testing::SettingsFields settings;
    settings.dataPath = appDir() + "/data/";
    mirelo::testing::writeSettingsFile(settings);
    const std::string file = path("System/Settings.xml");
    const std::string before = readBytes(file);

    const std::string said = underFileSizeLimit(before.size() / 2, [] {
        try {
            UpdateSettingsFile(true, "Åsa Lindqvist");
        } catch (const MireloError &error) {
            platform::MsgBox(std::to_string(error.number()), platform::MsgBoxButtons::OK,
                             platform::MsgBoxIcon::Stop);
        }
    });
    EXPECT_EQ(said, std::to_string(runtime::PermissionDenied) + "\n");
    EXPECT_EQ(readBytes(file), before);
    EXPECT_EQ(filesIn(path("System")), std::set<std::string>{"Settings.xml"});
}

} // namespace

#include "intake/inbox_scan.h"

#include "core/application_context.h"
#include "core/clock.h"
#include "core/mirelo_error.h"
#include "intake/message_to_patient.h"
#include "platform/file_system.h"
#include "platform/message_box.h"
#include "platform/process_end.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <string>

namespace mirelo {
namespace {

// The service's files end in "xml"; the test is on these three characters and nothing more,
// so a file still being written under a temporary name is left alone.
bool isMessageName(const std::string &name) {
    std::string ending = name.substr(name.size() < 3 ? 0 : name.size() - 3);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return ending == "XML";
}

// Dated to the second and free of colons, so rejected messages of the same name can lie side
// by side for a person to look at.
std::string rejectedName(const std::string &name) {
    return Now().toString(QStringLiteral("yyyy-MM-dd_HHmmss_")).toStdString() + name;
}

// The service writes a message in one go; one whose last change is this old is whole.
constexpr std::chrono::seconds SettlingTime{3};

bool isWhole(const platform::FileStamp &stamp, const UnfinishedMessages &unfinished,
             const std::string &path) {
    const std::chrono::milliseconds now{Now().toMSecsSinceEpoch()};
    if (stamp.lastChange.time_since_epoch() <= now - SettlingTime) {
        return true;
    }
    const auto seenBefore = unfinished.find(path);
    return seenBefore != unfinished.end() && seenBefore->second == stamp;
}

// A message whose IdValue names no patient is set aside for a person to look at, and the
// physician is told, so that a prescription never goes missing in silence.
void setAside(const platform::FileEntry &file, const std::string &idValue,
              const std::string &errorFolder) {
    const std::string asideName = rejectedName(file.Name);
    platform::MoveFile(file.Path, errorFolder + asideName);
    const std::string why =
        idValue.empty() ? "det saknar personnummer" : "\"" + idValue + "\" är inget personnummer";
    platform::MsgBox("Receptet " + file.Name + " kunde inte läsas in: " + why +
                         ". Det ligger kvar som " + asideName + " i mappen Error.",
                     platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Exclamation, "Mirelo");
}

void showIntakeFailure(const MireloError &error) {
    const auto show = [](const std::string &text) {
        platform::MsgBox(text, platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
    };
    switch (error.number()) {
    // The two failures of the product number exchange leave the message to the next scan.
    case errors::VnrResponseDamaged:
        show(error.description() + " ");
        return;
    case errors::ServerUnreachable:
        show("Kunde inte ansluta till Mirelos loginserver. Kontrollera din internetförbindelse.");
        return;
    // A damaged message is not moved aside: it stays in the inbox and ends the process again
    // after each login until someone takes it away.
    default:
        show(error.description());
        platform::EndProcess();
    }
}

} // namespace

bool ReadFolder(UnfinishedMessages &unfinished) {
    const std::string inbox = InboxFolder();
    if (!platform::FolderExists(inbox)) {
        throw MireloError(errors::InboxMissing, "Det finns ingen katalog för inkommande recept.");
    }
    const std::string errorFolder = ErrorFolder();
    if (!platform::FolderExists(errorFolder)) {
        platform::CreateFolder(errorFolder);
    }

    bool handled = false;
    UnfinishedMessages stillUnfinished;
    std::chrono::milliseconds lockPatience = PatientLockPatience;
    for (const platform::FileEntry &file : platform::GetFolderFiles(inbox)) {
        if (!isMessageName(file.Name)) {
            continue;
        }
        const platform::FileStamp stamp = platform::GetFileStamp(file.Path);
        if (!isWhole(stamp, unfinished, file.Path)) {
            stillUnfinished.emplace(file.Path, stamp);
            continue;
        }
        // The message is deleted only after its patient file has been written.
        MessageIntake intake;
        try {
            intake = TakeInPrescriptionFile(file.Path, lockPatience);
        } catch (const MireloError &error) {
            if (error.number() != errors::PatientFileBusy) {
                throw;
            }
            // The patient is being changed on another workstation: the message stays for the
            // next scan, which comes by itself within ten seconds, and no box interrupts the
            // physician with what no one needs to act on. The messages after it are taken in as
            // usual, each tried once without waiting, so a workstation stuck holding a patient
            // costs a scan at most one wait.
            lockPatience = std::chrono::milliseconds{0};
            continue;
        }
        if (!intake.takenIn) {
            setAside(file, intake.idValue, errorFolder);
        } else {
            platform::DeleteFile(file.Path, false);
            handled = true;
        }
    }
    unfinished = std::move(stillUnfinished);
    return handled;
}

void InboxTimer::Timer1_Timer(const std::function<bool()> &isMedicationViewVisible,
                              const std::function<void()> &refreshMedicationView) {
    try {
        ++tickCount_;
        if (tickCount_ % 10 != 0) {
            return;
        }
        tickCount_ = 0;
        // Asked before the scan, and the refresh is made whoever the messages were for.
        const bool viewVisible = isMedicationViewVisible();
        if (ReadFolder(unfinished_) && viewVisible) {
            refreshMedicationView();
        }
    } catch (const MireloError &error) {
        showIntakeFailure(error);
    }
}

} // namespace mirelo

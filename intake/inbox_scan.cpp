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

bool ReadFolder() {
    const std::string inbox = InboxFolder();
    if (!platform::FolderExists(inbox)) {
        throw MireloError(errors::InboxMissing, "Det finns ingen katalog för inkommande recept.");
    }
    const std::string errorFolder = ErrorFolder();
    if (!platform::FolderExists(errorFolder)) {
        platform::CreateFolder(errorFolder);
    }

    bool handled = false;
    for (const platform::FileEntry &file : platform::GetFolderFiles(inbox)) {
        if (!isMessageName(file.Name)) {
            continue;
        }
        // The message is deleted only after its patient file has been written.
        if (ImportPrescriptionFile(file.Path).empty()) {
            platform::MoveFile(file.Path, errorFolder + rejectedName(file.Name));
        } else {
            platform::DeleteFile(file.Path, false);
            handled = true;
        }
    }
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
        if (ReadFolder() && viewVisible) {
            refreshMedicationView();
        }
    } catch (const MireloError &error) {
        showIntakeFailure(error);
    }
}

} // namespace mirelo

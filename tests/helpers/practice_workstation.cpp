#include "core/application_context.h"
#include "intake/inbox_scan.h"
#include "platform/file_system.h"
#include "platform/xml_document.h"
#include "prescription_message_builder.h"
#include "records/note_records.h"

using namespace mirelo;

// One workstation of a practice: an application folder and an inbox of its own, the data folder
// shared with the others. As fast as it can, it drops each of its messages, for each patient in
// turn, into its inbox and takes it in as the inbox scan does; then, unless the patient is the
// last named (new to the practice, without notes), it saves the message's name as the new text
// of its own note on the patient's product "N" + its number. A failure, or any box, ends it with
// the run time's own report.
// Arguments: application folder, data folder, workstation number, messages, patients.
int main(int argc, char **argv) {
    platform::initialiseXml();
    setApplicationDirectoryForTesting(argv[1]);
    session().gDataPath = argv[2];
    const std::string workstation = argv[3];
    const std::vector<std::string> patients(argv + 5, argv + argc);
    UnfinishedMessages unfinished;
    for (int i = 0; i < std::stoi(argv[4]); ++i) {
        const std::string &pnr = patients[i % patients.size()];
        const std::string name = "W" + workstation + "M" + std::to_string(i);
        testing::writePrescriptionMessage(InboxFolder() + name + ".xml",
                                          {.pnr = pnr, .setId = name, .items = {{.regNr = name}}});
        ReadFolder(unfinished);
        if (pnr != patients.back()) {
            SaveProductNote(pnr, "N" + workstation, "Anteckning " + name, "Doktor",
                            [](const std::string &) {});
        }
    }
    // A message whose patient another workstation held stays for a later scan.
    while (!platform::GetFolderFiles(InboxFolder()).empty()) {
        ReadFolder(unfinished);
    }
}

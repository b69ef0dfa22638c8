// A prescription message dropped into the inbox and taken in by the inbox poll, over a patient
// file already in the data folder. The input is the message's bytes, then a line
// "=====PATIENT=====", then the plain bytes of the patient file P1.xml (no such line: no file).
// Intake may end in two ways only: no box, the message gone from the inbox and every patient
// file it wrote readable; or a box, with every file as it was and the message still waiting.
// Nothing is ever written outside the application directory's own folders.
#include "core/mirelo_error.h"
#include "fuzz_environment.h"
#include "intake/inbox_scan.h"
#include "records/patient_file.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

namespace {

const std::string PatientSeparator = "\n=====PATIENT=====\n";

bool isUnder(const std::string &path, const std::string &folder) {
    return path.compare(0, folder.size(), folder) == 0;
}

void checkReadable(const std::string &patientPath) {
    try {
        ReadPatientFile(patientPath);
    } catch (const MireloError &error) {
        violated("a patient file written by intake reads back (" + patientPath + ": " +
                 error.description() + ")");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();

    const size_t split = input.find(PatientSeparator);
    const std::string messagePath = environment.path("in/message.xml");
    writeBytes(messagePath, input.substr(0, split));
    if (split != std::string::npos) {
        writeBytes(environment.path("data/P1.xml"),
                   scrambledBytes(input.substr(split + PatientSeparator.size())));
    }
    const auto before = environment.allFiles();

    InboxTimer timer;
    try {
        for (int tick = 0; tick < 10; ++tick) {
            timer.Timer1_Timer([] { return false; }, [] {});
        }
    } catch (const ProcessEnded &) {
    }
    const auto after = environment.allFiles();

    const std::string dataFolder = environment.path("data/");
    const std::string errorFolder = environment.path("Error/");
    for (const auto &[path, bytes] : after) {
        if (!isUnder(path, dataFolder) && !isUnder(path, errorFolder) && path != messagePath) {
            violated("nothing is written outside the data, inbox and error folders: " + path);
        }
    }

    if (!environment.boxes.empty()) {
        if (after != before) {
            violated("a failed intake leaves every file as it was, the message in the inbox");
        }
        return 0;
    }
    if (environment.processEnded) {
        violated("the process ends only after a box");
    }
    if (after.count(messagePath) != 0) {
        violated("a message taken in without a box is gone from the inbox");
    }
    for (const auto &[path, bytes] : after) {
        if (isUnder(path, dataFolder)) {
            const auto old = before.find(path);
            if (old == before.end() || old->second != bytes) {
                checkReadable(path);
            }
        }
    }
    return 0;
}

// A prescription message dropped into the inbox and taken in by the inbox poll, over a patient
// file already in the data folder: the input and the rules its outcome keeps are those of
// intake_rules.h.
#include "fuzz_environment.h"
#include "intake/inbox_scan.h"
#include "intake_rules.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

using namespace mirelo;
using namespace mirelo::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();
    const auto scan = [&environment] {
        InboxTimer timer;
        try {
            for (int tick = 0; tick < 10; ++tick) {
                timer.Timer1_Timer([] { return false; }, [] {});
            }
        } catch (const ProcessEnded &) {
        }
        const ScanOutcome outcome{environment.boxes.size(), environment.processEnded};
        environment.boxes.clear();
        environment.processEnded = false;
        return outcome;
    };
    const std::string input(reinterpret_cast<const char *>(data), size);
    if (const auto broken =
            BrokenIntakeRule({environment.appDir(), environment.root()}, input, scan)) {
        violated(*broken);
    }
    return 0;
}

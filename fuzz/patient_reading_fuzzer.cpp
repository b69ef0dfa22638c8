// A stored patient file read into the rows of the medication view, with and without the past
// products. The input is the plain bytes of the file; it is stored scrambled, as on disk. The
// reading either fails with a number of ours or fills rows that fit the grid it reports.
#include "core/mirelo_error.h"
#include "fuzz_environment.h"
#include "records/medication_overview.h"

#include <cstddef>
#include <cstdint>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();
    writeBytes(environment.path("data/P1.xml"), scrambleBytes(input));

    for (const bool showAll : {false, true}) {
        try {
            const MedicationOverview overview =
                ReadPatientFolder("P1", showAll, medication_grid.RowsAtStart);
            if (overview.gridRows < static_cast<int>(overview.rows.size()) + 1 ||
                overview.gridRows < medication_grid.RowsAtStart) {
                violated("the filled rows fit in the grid, which never shrinks");
            }
            if (overview.currentRow < 0 || overview.currentRow >= overview.gridRows) {
                violated("the current row is a row of the grid");
            }
        } catch (const MireloError &) {
        }
    }
    if (!environment.boxes.empty()) {
        violated("reading a patient file into rows shows no box of its own");
    }
    return 0;
}

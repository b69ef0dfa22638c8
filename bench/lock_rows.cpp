#include "bench_data.h"
#include "intake/message_to_patient.h"
#include "physical_limits.h"
#include "platform/file_system.h"
#include "records/patient_file.h"
#include "rows.h"

#include <future>
#include <thread>

namespace mirelo::bench {
namespace {

constexpr const char *Pnr = "191212121212";

// A message taken in as the inbox scan does it, locking the patient, against the same intake by
// a writer that already holds the lock: what taking and letting go of the lock adds to a message.
// Gives the row and the median of the locked intake.
std::pair<Row, double> lockedIntakeRow(int products, int runs) {
    BenchInstallation installation;
    const std::string patientPath = installation.data() + Pnr + ".xml";
    const std::string messagePath = installation.inbox() + "message.xml";
    const std::string before = scrambledByRule(patientPlainText(Pnr, products));
    writeFile(messagePath, prescriptionMessageBytes(Pnr, 3));
    const std::uintmax_t messageBytes = platform::GetFileStamp(messagePath).size;
    std::vector<double> locked;
    std::vector<double> heldAlready;
    const auto takeInLocking = [&] {
        writeFile(patientPath, before);
        locked.push_back(secondsOf([&] { ImportPrescriptionFile(messagePath); }));
    };
    const auto takeInHolding = [&] {
        writeFile(patientPath, before);
        const PatientFileLock held(Pnr);
        heldAlready.push_back(secondsOf([&] {
            platform::XmlDocument message;
            message.load(messagePath);
            TakeInMessage(message, messageBytes, held);
        }));
    };
    // Each goes first every other run, so that neither gains by its place.
    for (int run = 0; run < runs; ++run) {
        if (run % 2 == 0) {
            takeInLocking();
        }
        takeInHolding();
        if (run % 2 == 1) {
            takeInLocking();
        }
    }
    const Comparison times{median(locked), median(heldAlready)};
    return {timeRow("a 3-item message into a " + std::to_string(products) +
                        "-product file, locked against not",
                    times, "<= 1.05x"),
            times.mirelo};
}

// A writer that finds the patient held by another, who lets go after `holding` seconds: the
// time until the writer has the lock, against a waiter whom the system wakes the moment the lock
// is let go.
Row waitRow(double holding, int runs) {
    BenchInstallation installation;
    const auto behindAnother = [holding](const std::function<void()> &wait) {
        std::promise<void> taken;
        std::thread other([&] {
            const PatientFileLock lock(Pnr);
            taken.set_value();
            std::this_thread::sleep_for(std::chrono::duration<double>(holding));
        });
        taken.get_future().wait();
        const double waited = secondsOf(wait);
        other.join();
        return waited;
    };
    const std::string lockFile = installation.data() + platform::RecordLockFileName;
    std::vector<double> mirelo;
    std::vector<double> limit;
    for (int run = 0; run < runs; ++run) {
        mirelo.push_back(behindAnother([] { const PatientFileLock lock(Pnr); }));
        limit.push_back(behindAnother([&] { limit::waitForWholeFileLock(lockFile); }));
    }
    return timeRow("a writer behind another's intake into a 1000-product file",
                   {median(mirelo), median(limit)}, "<= 4 ms more");
}

} // namespace

std::vector<Row> lockRows(const Effort &effort) {
    const auto [thousand, intake] = lockedIntakeRow(effort.size(1000, 10), effort.runs(41));
    return {thousand, lockedIntakeRow(effort.size(5000, 50), effort.runs(21)).first,
            waitRow(intake, effort.runs(15))};
}

} // namespace mirelo::bench

#include "bench_data.h"
#include "core/application_context.h"
#include "core/text_scrambling.h"
#include "intake/message_to_patient.h"
#include "physical_limits.h"
#include "platform/file_system.h"
#include "records/medication_overview.h"
#include "records/patient_directory.h"
#include "rows.h"

#include <cstdio>
#include <stdexcept>
#include <sys/stat.h>

namespace mirelo::bench {
namespace {

constexpr const char *Pnr = "191212121212";

// The message is taken into a patient file as the inbox scan does it, the file restored before
// every run. The limit parses the plain text the intake leaves once and writes its stored
// bytes once, in the same crash-safe way.
Row intakeRow(const std::string &operation, int products, int items, int runs,
              const std::string &target) {
    BenchInstallation installation;
    const std::string patientPath = installation.data() + Pnr + ".xml";
    const std::string messagePath = installation.inbox() + "message.xml";
    const std::string before = scrambledByRule(patientPlainText(Pnr, products));
    writeFile(messagePath, prescriptionMessageBytes(Pnr, items));
    writeFile(patientPath, before);
    ImportPrescriptionFile(messagePath);
    const std::string after = readFile(patientPath);
    const std::string afterPlain = unscrambledByRule(after);
    const std::string limitPath = installation.data() + "limit.xml";

    const Comparison times = compareInTurns(
        runs, [&] { writeFile(patientPath, before); }, [&] { ImportPrescriptionFile(messagePath); },
        [&] {
            limit::parseOnce(afterPlain);
            platform::WriteAllBytes(limitPath, after);
        });
    // The intake stamps the moment it took the items in; all else is the same every run.
    writeFile(patientPath, before);
    ImportPrescriptionFile(messagePath);
    if (readFile(patientPath).size() != after.size()) {
        throw std::runtime_error(operation + ": the intake wrote another file than at first");
    }
    return timeRow(operation, times, target);
}

// A message of many items into a small file is held against parsing the message once and
// writing the result once.
Row manyItemsRow(const Effort &effort) {
    BenchInstallation installation;
    const int items = effort.size(10000, 100);
    const std::string patientPath = installation.data() + Pnr + ".xml";
    const std::string messagePath = installation.inbox() + "message.xml";
    const std::string before = scrambledByRule(patientPlainText(Pnr, 10));
    const std::string message = prescriptionMessageBytes(Pnr, items);
    writeFile(messagePath, message);
    writeFile(patientPath, before);
    ImportPrescriptionFile(messagePath);
    const std::string after = readFile(patientPath);
    const std::string limitPath = installation.data() + "limit.xml";

    const Comparison times = compareInTurns(
        effort.runs(5), [&] { writeFile(patientPath, before); },
        [&] { ImportPrescriptionFile(messagePath); },
        [&] {
            limit::parseOnce(message);
            platform::WriteAllBytes(limitPath, after);
        });
    return timeRow("a " + std::to_string(items) + "-item message into a 10-product file", times,
                   "<= 1.5x");
}

std::string mebibyteOfPatientText() {
    const std::string file = patientPlainText(Pnr, 100);
    std::string text;
    while (text.size() < (1u << 20)) {
        text += file;
    }
    // Cut at a character's start, so the text stays UTF-8.
    size_t end = 1u << 20;
    while ((static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return text.substr(0, end);
}

Row throughputRow(const std::string &operation, const Comparison &times, double bytes) {
    char mirelo[32];
    char limitText[32];
    std::snprintf(mirelo, sizeof mirelo, "%.0f MB/s", bytes / times.mirelo / 1e6);
    std::snprintf(limitText, sizeof limitText, "%.0f MB/s", bytes / times.limit / 1e6);
    return {operation, mirelo, limitText, ratioText(times.mirelo, times.limit), ">= 1000 MB/s"};
}

} // namespace

std::vector<Row> intakeRows(const Effort &effort) {
    const int large = effort.size(5000, 50);
    return {
        intakeRow("a 3-item message into a " + std::to_string(effort.size(1000, 10)) +
                      "-product file",
                  effort.size(1000, 10), 3, effort.runs(9), "<= 1.5x"),
        intakeRow("a 3-item message into a " + std::to_string(large) + "-product file", large, 3,
                  effort.runs(5), "<= 1.5x"),
        manyItemsRow(effort),
    };
}

std::vector<Row> scramblingRows(const Effort &effort) {
    const std::string plain = mebibyteOfPatientText();
    const std::string codePage = codePageBytes(plain);
    const std::string stored = ScrambleText(plain);
    std::string shifted;
    const int runs = effort.runs(15);
    const Comparison scrambling = compareInTurns(
        runs, [] {}, [&] { ScrambleText(plain); },
        [&] { limit::shiftBytes(codePage, shifted, limit::scrambleTable()); });
    const Comparison unscrambling = compareInTurns(
        runs, [] {}, [&] { UnscrambleText(stored); },
        [&] { limit::shiftBytes(stored, shifted, limit::unscrambleTable()); });
    return {throughputRow("ScrambleText of 1 MiB", scrambling, double(plain.size())),
            throughputRow("UnscrambleText of 1 MiB", unscrambling, double(stored.size()))};
}

std::vector<Row> searchRows(const Effort &effort, const std::string &cache) {
    const int patients = effort.size(100000, 1000);
    const std::string folder = patientFolder(cache, patients);
    BenchInstallation installation;
    session().gDataPath = folder;
    std::vector<Row> rows;
    for (const std::string key : {"191212", "2"}) {
        std::vector<std::string> list;
        const Comparison times = compareInTurns(
            effort.runs(7), [] {},
            [&] {
                list.clear();
                SearchPatient(key, list);
            },
            [&] {
                for (const std::string &name : limit::folderNames(folder, key)) {
                    readFile(folder + name);
                }
            });
        if (list.size() != 10) {
            throw std::runtime_error("the search for " + key + " found " +
                                     std::to_string(list.size()) + " patients, not 10");
        }
        rows.push_back(timeRow("prefix search \"" + key + "\" over " + std::to_string(patients) +
                                   " patient files (10 hits)",
                               times, "<= 1.3x"));
    }
    // A single look-up takes microseconds: many are timed together and divided.
    const std::string missing = "197001011234";
    const int lookUps = 1000;
    const Comparison together = compareInTurns(
        effort.runs(7), [] {},
        [&] {
            std::vector<std::string> list;
            for (int i = 0; i < lookUps; ++i) {
                if (SearchPatient(missing, list).openInMedicationView) {
                    throw std::runtime_error("a patient file that shouldn't be there");
                }
            }
        },
        [&] {
            struct stat status {};
            for (int i = 0; i < lookUps; ++i) {
                ::stat((folder + missing + ".xml").c_str(), &status);
            }
        });
    rows.push_back(timeRow("exact search for a number without a file",
                           {together.mirelo / lookUps, together.limit / lookUps}, "<= 1 ms"));
    return rows;
}

} // namespace mirelo::bench

// Times the program's hot paths against what the machine and the libraries can do at best, on
// data it makes itself, and prints one table: operation, Mirelo, limit, ratio, target.
// --quick runs every row once on small data, to show that the rows still run; --only runs the
// groups whose name holds the word ("intake", "lock", "scrambling", "search", "medication",
// "start-up").

#include "measure.h"
#include "platform/heap.h"
#include "platform/xml_document.h"
#include "rows.h"

#include <QApplication>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

int main(int argc, char **argv) {
    mirelo::bench::Effort effort;
    std::string cache = MIRELO_BENCH_CACHE;
    std::string only;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            effort.quick = true;
        } else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
            only = argv[++i];
        } else if (std::strcmp(argv[i], "--cache") == 0 && i + 1 < argc) {
            cache = argv[++i];
        } else {
            std::fprintf(stderr, "mirelo_bench [--quick] [--only WORD] [--cache FOLDER]\n");
            return 2;
        }
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    mirelo::platform::initialiseHeap();
    mirelo::platform::initialiseXml();
    QApplication application(argc, argv);

    using namespace mirelo::bench;
    const StartupPrograms programs{MIRELO_BENCH_MIRELO, MIRELO_BENCH_HELLO_WORLD,
                                   MIRELO_BENCH_PROBE_FOLDER};
    std::vector<Row> rows;
    const auto add = [&rows, &only](const char *what, const auto &measure) {
        if (std::strstr(what, only.c_str()) == nullptr) {
            return;
        }
        std::fprintf(stderr, "measuring %s ...\n", what);
        for (const Row &row : measure()) {
            rows.push_back(row);
        }
    };
    try {
        add("the intake", [&] { return intakeRows(effort); });
        add("the patient's lock", [&] { return lockRows(effort); });
        add("scrambling", [&] { return scramblingRows(effort); });
        add("the patient search", [&] { return searchRows(effort, cache); });
        add("the medication view", [&] { return medicationViewRows(effort); });
        add("start-up and memory", [&] { return startupRows(effort, programs); });
    } catch (const std::exception &failure) {
        printTable(rows);
        std::fprintf(stderr, "benchmark failed: %s\n", failure.what());
        return 1;
    }
    printTable(rows);
    return 0;
}

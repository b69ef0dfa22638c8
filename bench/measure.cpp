#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace mirelo::bench {

double secondsOf(const std::function<void()> &work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Comparison compareInTurns(int runs, const std::function<void()> &prepare,
                          const std::function<void()> &mirelo, const std::function<void()> &limit) {
    std::vector<double> mireloTimes;
    std::vector<double> limitTimes;
    for (int run = 0; run < runs; ++run) {
        prepare();
        mireloTimes.push_back(secondsOf(mirelo));
        prepare();
        limitTimes.push_back(secondsOf(limit));
    }
    return {median(mireloTimes), median(limitTimes)};
}

std::string milliseconds(double seconds) {
    char text[32];
    const char *format = seconds < 0.001 ? "%.4f ms" : seconds < 0.01 ? "%.3f ms" : "%.1f ms";
    std::snprintf(text, sizeof text, format, seconds * 1000);
    return text;
}

std::string ratioText(double mirelo, double limit) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2fx", mirelo / limit);
    return text;
}

Row timeRow(const std::string &operation, const Comparison &times, const std::string &target) {
    return {operation, milliseconds(times.mirelo), milliseconds(times.limit),
            ratioText(times.mirelo, times.limit), target};
}

void printTable(const std::vector<Row> &rows) {
    const Row heading{"operation", "Mirelo", "limit", "ratio", "target"};
    size_t widths[5] = {};
    const auto widen = [&widths](const Row &row) {
        const std::string *cells[5] = {&row.operation, &row.mirelo, &row.limit, &row.ratio,
                                       &row.target};
        for (int i = 0; i < 5; ++i) {
            widths[i] = std::max(widths[i], cells[i]->size());
        }
    };
    widen(heading);
    for (const Row &row : rows) {
        widen(row);
    }
    const auto print = [&widths](const Row &row) {
        std::printf("| %-*s | %*s | %*s | %*s | %-*s |\n", int(widths[0]), row.operation.c_str(),
                    int(widths[1]), row.mirelo.c_str(), int(widths[2]), row.limit.c_str(),
                    int(widths[3]), row.ratio.c_str(), int(widths[4]), row.target.c_str());
    };
    print(heading);
    std::printf("|%s|%s:|%s:|%s:|%s|\n", std::string(widths[0] + 2, '-').c_str(),
                std::string(widths[1] + 1, '-').c_str(), std::string(widths[2] + 1, '-').c_str(),
                std::string(widths[3] + 1, '-').c_str(), std::string(widths[4] + 2, '-').c_str());
    for (const Row &row : rows) {
        print(row);
    }
    std::fflush(stdout);
}

} // namespace mirelo::bench

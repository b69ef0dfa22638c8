#pragma once

#include <functional>
#include <string>
#include <vector>

namespace mirelo::bench {

// How hard the benchmark works: the full run, or one pass over small data that only shows
// every row still runs.
struct Effort {
    bool quick = false;
    int runs(int full) const { return quick ? 1 : full; }
    int size(int full, int small) const { return quick ? small : full; }
};

// Median times in seconds of the program's way and of the limit's, measured in turns.
struct Comparison {
    double mirelo = 0;
    double limit = 0;
};

// Runs the program's way and the limit's way `runs` times each, taking turns so that both
// see the same machine; `prepare` runs untimed before each of them.
Comparison compareInTurns(int runs, const std::function<void()> &prepare,
                          const std::function<void()> &mirelo, const std::function<void()> &limit);

double secondsOf(const std::function<void()> &work);
double median(std::vector<double> values);

// One line of the printed table.
struct Row {
    std::string operation;
    std::string mirelo;
    std::string limit;
    std::string ratio;
    std::string target;
};

std::string milliseconds(double seconds);
std::string ratioText(double mirelo, double limit);
// A row of two medians, in milliseconds, and their ratio.
Row timeRow(const std::string &operation, const Comparison &times, const std::string &target);
void printTable(const std::vector<Row> &rows);

} // namespace mirelo::bench

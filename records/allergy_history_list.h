#pragma once

#include "core/mirelo_error.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace mirelo {

// The grid of the allergy history: a hidden column 0, then one record a row under a fixed
// heading row.
namespace history_grid {
inline constexpr int Status = 1;
inline constexpr int Date = 2;
inline constexpr int By = 3;
inline constexpr int Description = 4;
inline constexpr int Cols = 5;
} // namespace history_grid

struct HistoryColumn {
    std::string heading;
    int width = 0; // twips
    int cellAlignment = 0;
};
// Columns 1 to 4, by their number less one.
const std::array<HistoryColumn, 4> &HistoryGridColumns();

// One record as its row shows it. A fill that broke off in a row leaves the cells after the
// failure unset.
struct HistoryRow {
    std::optional<std::string> status;      // "Ja" for a warning set, "Nej" for one taken away
    std::optional<std::string> date;        // the first 10 characters of the time
    std::optional<std::string> by;          // who wrote the record
    std::optional<std::string> description; // the reason, each line feed as two blanks
};

// The records of a product, newest first as the file holds them. A fill that failed holds the
// rows up to the failure, the row it broke off in included.
struct HistoryList {
    std::vector<HistoryRow> rows;
    std::optional<MireloError> failure;
};

// Reads the stored file at `path` (damaged: 0x80040204) and lists the records of the RegNr.
// The RegNr goes into the query between single quotes: one holding a single quote is an
// invalid query. A status that isn't a number fails with 13.
HistoryList ListAllergyHistory(const std::string &path, const std::string &regNr);

// A row is as many lines high as its reason needs at 58 characters a line.
int HistoryRowLines(int descriptionLength);

} // namespace mirelo

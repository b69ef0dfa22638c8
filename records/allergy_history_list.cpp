#include "records/allergy_history_list.h"

#include "core/conversions.h"
#include "records/patient_file.h"

#include <QString>

namespace mirelo {
namespace {

std::string firstCharacters(const std::string &text, int count) {
    return QString::fromStdString(text).left(count).toStdString();
}

std::string lineFeedsAsTwoBlanks(const std::string &text) {
    std::string shown;
    for (const char c : text) {
        shown += c == '\n' ? std::string("  ") : std::string(1, c);
    }
    return shown;
}

} // namespace

const std::array<HistoryColumn, 4> &HistoryGridColumns() {
    static const std::array<HistoryColumn, 4> columns{{
        {"Ö.käns", 800, 4},
        {"Datum", 930, 1},
        {"Förskrivare", 1930, 1},
        {"Beskrivning", 3700, 1},
    }};
    return columns;
}

HistoryList ListAllergyHistory(const std::string &path, const std::string &regNr) {
    HistoryList list;
    try {
        const platform::XmlDocument patient = ReadPatientFile(path);
        // Records inside History carry their RegNr; the flag of the same name inside a Product
        // has none and never matches.
        for (const platform::XmlNode &record :
             patient.selectNodes("//AllergicHistory[RegNr = '" + regNr + "']")) {
            HistoryRow &row = list.rows.emplace_back();
            const auto field = [&record](const char *name) {
                return record.selectSingleNode(name).text();
            };
            row.status = CInt(field("AllergicStatusHistory")) == 1 ? "Ja" : "Nej";
            row.date = firstCharacters(field("AllergicInfoTimestampHistory"), 10);
            row.by = field("AllergicInfoByHistory");
            row.description = lineFeedsAsTwoBlanks(field("AllergicInfoHistory"));
        }
    } catch (const MireloError &error) {
        list.failure = error;
    }
    return list;
}

int HistoryRowLines(int descriptionLength) {
    return descriptionLength < 59 ? 1 : descriptionLength / 58 + 1;
}

} // namespace mirelo

#include "bench_data.h"
#include "physical_limits.h"
#include "platform/gui/flex_grid.h"
#include "records/medication_overview.h"
#include "rows.h"
#include "screens/frmShowPatient.h"
#include "screens/screen_instance.h"

#include <QTableWidget>
#include <stdexcept>

namespace mirelo::bench {
namespace {

constexpr const char *Pnr = "191212121212";

// The limit's grid: a plain table holding the same texts, one product a row.
void fillPlainTable(QTableWidget &table, const std::vector<std::vector<std::string>> &products) {
    table.clear();
    table.setRowCount(static_cast<int>(products.size()));
    table.setColumnCount(medication_grid.Cols);
    for (size_t row = 0; row < products.size(); ++row) {
        for (size_t col = 0; col < products[row].size() && col < medication_grid.Cols; ++col) {
            table.setItem(static_cast<int>(row), static_cast<int>(col),
                          new QTableWidgetItem(QString::fromStdString(products[row][col])));
        }
    }
}

} // namespace

std::vector<Row> medicationViewRows(const Effort &effort) {
    BenchInstallation installation;
    const int products = effort.size(1000, 10);
    const std::string path = installation.data() + Pnr + ".xml";
    writeFile(path, scrambledByRule(patientPlainText(Pnr, products)));
    const std::string sized = "a " + std::to_string(products) + "-product file";

    const Comparison rows = compareInTurns(
        effort.runs(9), [] {},
        [&] {
            const MedicationOverview view =
                ReadPatientFolder(Pnr, true, medication_grid.RowsAtStart);
            if (view.failure || view.rows.size() != static_cast<size_t>(products)) {
                throw std::runtime_error("the medication rows didn't fill");
            }
        },
        [&] { limit::productTexts(path); });

    // Opening as the search screen does it: fill the view, then make row 1 current and show
    // its details.
    screens::frmShowPatient &view = screens::Screen<screens::frmShowPatient>();
    QTableWidget table;
    const Comparison opening = compareInTurns(
        effort.runs(9), [] {},
        [&] {
            const screens::frmShowPatient::OneReading reading(view);
            view.ReadPatientFolder(Pnr);
            view.FlexGrid->setRow(1);
            view.FlexGrid_SelChange();
        },
        [&] { fillPlainTable(table, limit::productTexts(path)); });
    screens::Unload<screens::frmShowPatient>();

    return {timeRow("medication rows from " + sized, rows, "<= 1.5x"),
            timeRow("opening a patient of " + sized + " (fill + select row 1)", opening, "<= 2x")};
}

} // namespace mirelo::bench

#include "records/medication_overview.h"

#include "platform/file_system.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mirelo {
namespace {

using namespace medication_grid;
using cell_alignment::CenterCenter;
using cell_alignment::LeftCenter;
using cell_alignment::RightBottom;

// The blanks in front of the hidden captions and the dosage heading are part of them: they
// bring a left-aligned heading towards the middle of its cell.
const std::array<GridColumnLayout, Cols> Layout = {{
    {200, "", std::nullopt, std::nullopt, RightBottom},
    {200, "", std::nullopt, CenterCenter, RightBottom},
    {260, "", std::nullopt, std::nullopt, RightBottom},
    {3400, "Läkemedel", CenterCenter, std::nullopt, LeftCenter},
    {1080, "Ordinerat", CenterCenter, std::nullopt, LeftCenter},
    {700, "Exp.", CenterCenter, std::nullopt, CenterCenter},
    {1320, "Förpack.", CenterCenter, std::nullopt, LeftCenter},
    {0, " ID", CenterCenter, std::nullopt, LeftCenter},
    {0, " ATC", CenterCenter, std::nullopt, LeftCenter},
    {0, " RegNr", CenterCenter, std::nullopt, LeftCenter},
    {4000, "                       Dosering", LeftCenter, std::nullopt, LeftCenter},
}};

class GridFill {
  public:
    explicit GridFill(MedicationOverview &view) : view_(view) {}

    bool warning() const { return warning_; }
    void noteWarning() { warning_ = true; }

    // Cells are written one by one, so a product that lacks an element leaves the cells
    // before it written, as the grid showed them.
    void writeRow(const platform::XmlNode &product) {
        view_.rows.emplace_back();
        const int row = static_cast<int>(view_.rows.size());
        view_.gridRows = std::max(view_.gridRows, row + 1);

        GridCell &history = cell(row, HistoryIcon);
        if (ProductFlagIsSet(product, "AllergicHistory")) {
            history.picture = image_list1::AllergyHistory;
        }
        // A warning hides a note: the triangle or the N, never both.
        GridCell &warningOrNote = cell(row, WarningOrNoteIcon);
        if (ProductFlagIsSet(product, "Allergic")) {
            warningOrNote.picture = image_list1::Warning;
            warning_ = true;
        } else if (!ProductField(product, "ExtendedMedicalInfo").empty()) {
            warningOrNote.picture = image_list1::Note;
        }
        GridCell &tick = cell(row, TickBox);
        tick.picture =
            ProductFlagIsSet(product, "Checked") ? image_list1::Ticked : image_list1::Unticked;

        writeText(row, Product, [&] { return ProductDisplayName(product); });
        writeText(row, Prescribed, [&] { return ProductField(product, "PrescribedTimestamp"); });
        writeText(row, Repeats,
                  [&] { return ProductField(product, "DispensingRepeatNumber") + " ggr"; });
        writeText(row, Packages, [&] { return ProductPackages(product); });
        writeText(row, ID, [&] { return ProductField(product, "ID"); });
        writeText(row, ATC, [&] { return ProductField(product, "ATCcode"); });
        writeText(row, RegNr, [&] { return ProductField(product, "RegNr"); });
        writeText(row, Dosage, [&] { return ProductField(product, "UnstructuredDosageAdmin"); });
    }

    // Two current products of one ATC code stand out in red, whole rows; past products and
    // names play no part, and two empty codes are equal too. The grid was painted pair by
    // pair, which left its current row on the later row of the last pair that matched: the
    // last row of the code of the latest row that has a later twin.
    void markDuplicateAtc(int currentCount) {
        std::unordered_map<std::string_view, std::vector<int>> rowsByAtc;
        for (int row = 1; row <= currentCount; ++row) {
            rowsByAtc[text(row, ATC)].push_back(row);
        }
        int latestWithTwin = 0;
        int itsLastTwin = 0;
        for (const auto &[atc, rows] : rowsByAtc) {
            if (rows.size() < 2) {
                continue;
            }
            for (const int row : rows) {
                paintRow(row);
            }
            if (rows[rows.size() - 2] > latestWithTwin) {
                latestWithTwin = rows[rows.size() - 2];
                itsLastTwin = rows.back();
            }
        }
        if (itsLastTwin != 0) {
            view_.currentRow = itsLastTwin;
        }
    }

  private:
    GridCell &cell(int row, int col) {
        view_.currentRow = row;
        GridCell &target = view_.rows[row - 1].cells[col];
        target.alignment = Layout[col].cellAlignment;
        return target;
    }

    // The cell is formatted before its text is read, as the grid had it when a read failed.
    template <typename Read> void writeText(int row, int col, Read read) {
        GridCell &target = cell(row, col);
        target.text = read();
    }

    const std::string &text(int row, int col) const { return view_.rows[row - 1].cells[col].text; }

    void paintRow(int row) {
        view_.currentRow = row;
        for (GridCell &each : view_.rows[row - 1].cells) {
            each.foreColor = DuplicateAtcColor;
        }
    }

    MedicationOverview &view_;
    bool warning_ = false;
};

void fill(const platform::XmlDocument &patient, bool showAll, MedicationOverview &view) {
    view.cleared = true;
    view.txtPnr = patient.firstElementAt("//Patient/PatientData/Pnr").text();
    const std::string givenName =
        patient.firstElementAt("//Patient/PatientData/FirstGivenName").text();
    view.txtFName =
        givenName + " " + patient.firstElementAt("//Patient/PatientData/FamilyName").text();

    // The file keeps the newest product first, and the grid is never sorted.
    GridFill grid(view);
    const std::vector<platform::XmlNode> products = patient.elementsAt("//Product");
    std::vector<platform::XmlNode> current;
    std::vector<platform::XmlNode> past;
    for (const platform::XmlNode &product : products) {
        if (ProductCheckedIs(product, "1")) {
            current.push_back(product);
        }
        if (ProductCheckedIs(product, "0")) {
            past.push_back(product);
        }
    }
    for (const platform::XmlNode &product : current) {
        grid.writeRow(product);
    }
    grid.markDuplicateAtc(static_cast<int>(current.size()));

    if (showAll) {
        for (const platform::XmlNode &product : past) {
            grid.writeRow(product);
        }
    }
    // A warning on a past product counts even while past products are not shown.
    if (!grid.warning()) {
        for (const platform::XmlNode &product : past) {
            if (ProductFlagIsSet(product, "Allergic")) {
                grid.noteWarning();
            }
        }
    }
    view.standingButton =
        grid.warning() ? ExtendedInfoButton::cmdExtInfo : ExtendedInfoButton::cmdNote;
}

} // namespace

const std::array<GridColumnLayout, Cols> &FlexGridLayout() {
    return Layout;
}

MedicationOverview FillFlexGrid(const platform::XmlDocument &patient, bool showAll, int gridRows) {
    MedicationOverview view;
    view.gridRows = gridRows;
    try {
        fill(patient, showAll, view);
    } catch (const MireloError &error) {
        view.failure = error;
    }
    return view;
}

MedicationOverview ReadPatientFolder(const std::string &pnr, bool showAll, int gridRows,
                                     std::optional<PatientReading> *reading) {
    MedicationOverview view;
    view.gridRows = gridRows;
    if (reading != nullptr) {
        reading->reset();
    }
    try {
        const std::string path = platform::GetFile(PatientFilePath(pnr)).Path;
        platform::XmlDocument patient = ReadPatientFile(path);
        view = FillFlexGrid(patient, showAll, gridRows);
        if (reading != nullptr) {
            reading->emplace(PatientReading{path, std::move(patient)});
        }
    } catch (const MireloError &error) {
        view.failure = error;
    }
    if (view.failure && view.failure->number() == runtime::FileNotFound) {
        view.failure = MireloError(errors::PatientFileMissing, "Patientens fil saknas.");
    }
    return view;
}

} // namespace mirelo

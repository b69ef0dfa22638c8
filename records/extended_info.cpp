#include "records/extended_info.h"

#include "platform/file_system.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

#include <algorithm>

namespace mirelo::extended_info {
namespace {

using namespace grid;
using cell_alignment::CenterCenter;
using cell_alignment::LeftCenter;
using cell_alignment::RightBottom;

// The blanks in front of the hidden captions are part of them.
const std::array<GridColumnLayout, Cols> Layout = {{
    {190, "", std::nullopt, CenterCenter, RightBottom},
    {200, "", std::nullopt, CenterCenter, RightBottom},
    {3400, "Läkemedel", CenterCenter, std::nullopt, LeftCenter},
    {1080, "Ordinerat", CenterCenter, std::nullopt, LeftCenter},
    {700, "Exp.", CenterCenter, std::nullopt, CenterCenter},
    {1320, "Förpack.", CenterCenter, std::nullopt, CenterCenter},
    {0, " ID", CenterCenter, std::nullopt, LeftCenter},
    {0, " ATC", CenterCenter, std::nullopt, LeftCenter},
    {0, " RegNr", CenterCenter, std::nullopt, LeftCenter},
    {4000, "Dosering", CenterCenter, std::nullopt, LeftCenter},
}};

// The newest product of each product number, and only if that one has a note or a warning.
const char *const ListedProducts = "//Product[(ExtendedMedicalInfo != \"\" or Allergic = 1) and "
                                   "(not(RegNr = preceding::RegNr))]";

class GridFill {
  public:
    explicit GridFill(Fill &fill) : fill_(fill) {}

    // Cells are written one by one, so a product that lacks an element leaves the cells
    // before it written, as the grid showed them.
    void writeRow(const platform::XmlNode &product) {
        fill_.rows.emplace_back();
        const int row = static_cast<int>(fill_.rows.size());
        fill_.gridRows = std::max(fill_.gridRows, row + 1);

        GridCell &history = cell(row, HistoryIcon);
        if (ProductFlagIsSet(product, "AllergicHistory")) {
            history.picture = images::AllergyHistory;
        }
        // A warning hides a note.
        GridCell &warningOrNote = cell(row, WarningOrNoteIcon);
        if (ProductFlagIsSet(product, "Allergic")) {
            warningOrNote.picture = images::Warning;
        } else if (!ProductField(product, "ExtendedMedicalInfo").empty()) {
            warningOrNote.picture = images::Note;
        }
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

    // Two listed products of one ATC code stand out in red, whole rows; two empty codes are
    // equal too.
    void markDuplicateAtc() {
        const int count = static_cast<int>(fill_.rows.size());
        for (int i = 1; i <= count; ++i) {
            for (int j = i + 1; j <= count; ++j) {
                if (text(i, ATC) == text(j, ATC)) {
                    paintRow(i);
                    paintRow(j);
                }
            }
        }
    }

  private:
    GridCell &cell(int row, int col) {
        fill_.currentRow = row;
        GridCell &target = fill_.rows[row - 1].cells[col];
        target.alignment = Layout[col].cellAlignment;
        return target;
    }

    template <typename Read> void writeText(int row, int col, Read read) {
        GridCell &target = cell(row, col);
        target.text = read();
    }

    const std::string &text(int row, int col) const { return fill_.rows[row - 1].cells[col].text; }

    void paintRow(int row) {
        fill_.currentRow = row;
        for (GridCell &each : fill_.rows[row - 1].cells) {
            each.foreColor = DuplicateAtcColor;
        }
    }

    Fill &fill_;
};

void fill(const platform::XmlDocument &patient, bool loadGeneralNote, Fill &result) {
    result.cleared = true;
    // SetupFlexGrid leaves the heading row current.
    result.currentRow = 0;
    if (loadGeneralNote) {
        const std::string givenName =
            patient.selectSingleNode("//Patient/PatientData/FirstGivenName").text();
        result.frame1Caption = "Övrig information om " + givenName + " " +
                               patient.selectSingleNode("//Patient/PatientData/FamilyName").text();
        result.text1 =
            WithCrLf(patient.selectSingleNode("//Patient/PatientData/GeneralInfo").text());
    }
    const std::string by = patient.selectSingleNode("//Patient/PatientData/GeneralInfoBy").text();
    result.label3 =
        by + " - " + patient.selectSingleNode("//Patient/PatientData/GeneralInfoTimestamp").text();

    GridFill grid(result);
    for (const platform::XmlNode &product : patient.selectNodes(ListedProducts)) {
        grid.writeRow(product);
    }
    grid.markDuplicateAtc();
}

} // namespace

const std::array<GridColumnLayout, Cols> &FlexGridLayout() {
    return Layout;
}

Fill FillFlexGrid(const platform::XmlDocument &patient, bool loadGeneralNote, int gridRows) {
    Fill result;
    result.gridRows = gridRows;
    try {
        fill(patient, loadGeneralNote, result);
    } catch (const MireloError &error) {
        result.failure = error;
    }
    return result;
}

Fill ReadPatientFolder(const std::string &pnr, bool loadGeneralNote, int gridRows) {
    Fill result;
    result.gridRows = gridRows;
    try {
        const platform::XmlDocument patient =
            ReadPatientFile(platform::GetFile(PatientFilePath(pnr)).Path);
        result = FillFlexGrid(patient, loadGeneralNote, gridRows);
    } catch (const MireloError &error) {
        result.failure = error;
    }
    if (result.failure && result.failure->number() == runtime::FileNotFound) {
        result.failure = MireloError(errors::PatientFileMissing, "Patientens fil saknas.");
    }
    return result;
}

Selection SelectionOf(const std::string &pnr, int mouseRow, const std::string &productText,
                      const std::string &id) {
    const platform::XmlDocument patient = ReadPatientFile(PatientFilePath(pnr));
    Selection selection;
    // A pointer on the heading, or one that has not been on the grid, shows nothing.
    if (mouseRow == 0) {
        selection.showsNothing = true;
        return selection;
    }
    if (productText.empty()) {
        return selection;
    }
    const platform::XmlNode product = patient.selectSingleNode("//Product[ID = \"" + id + "\"]");
    ProductPanel panel;
    panel.id = id;
    panel.frame2Caption = "Notering för patient ang: " + productText +
                          ", ordinerat av: " + ProductField(product, "PrescribedBy");
    panel.text2 = WithCrLf(ProductField(product, "ExtendedMedicalInfo"));
    panel.cmdAllergicHistoryVisible = ProductFlagIsSet(product, "AllergicHistory");
    panel.allergic = ProductFlagIsSet(product, "Allergic");
    panel.txtNoteChanged = ProductField(product, "ExtendedMedicalInfoBy") + " - " +
                           ProductField(product, "ExtendedMedicalInfoTimestamp");
    selection.product = panel;
    return selection;
}

} // namespace mirelo::extended_info

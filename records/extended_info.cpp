#include "records/extended_info.h"

#include "core/conversions.h"
#include "platform/file_system.h"
#include "records/patient_file.h"

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

std::string field(const platform::XmlNode &node, const char *name) {
    return node.selectSingleNode(name).text();
}

// Flags are numeric text: an empty one fails instead of reading as "no".
bool flagIsSet(const platform::XmlNode &product, const char *name) {
    return CInt(field(product, name)) == 1;
}

// The parser gives single line feeds; a text box breaks its lines with CR LF.
std::string withCrLf(const std::string &text) {
    std::string boxed;
    for (const char c : text) {
        if (c == '\n') {
            boxed += '\r';
        }
        boxed += c;
    }
    return boxed;
}

std::string displayName(const platform::XmlNode &product) {
    const std::string name = field(product, "ProductName");
    const std::string form = field(product, "Form");
    const std::string strength = field(product, "Str");
    return name + " " + form + " " + strength + " " + field(product, "CompanyName");
}

// Only the presence of the package size counts: an empty one still reads "2 X ".
std::string packages(const platform::XmlNode &product) {
    const platform::XmlNode size = product.selectSingleNode("PackageSize");
    if (size.isNull()) {
        return {};
    }
    return field(product, "NumberOfPackages") + " X " + size.text();
}

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
        if (flagIsSet(product, "AllergicHistory")) {
            history.picture = images::AllergyHistory;
        }
        // A warning hides a note.
        GridCell &warningOrNote = cell(row, WarningOrNoteIcon);
        if (flagIsSet(product, "Allergic")) {
            warningOrNote.picture = images::Warning;
        } else if (!field(product, "ExtendedMedicalInfo").empty()) {
            warningOrNote.picture = images::Note;
        }
        writeText(row, Product, [&] { return displayName(product); });
        writeText(row, Prescribed, [&] { return field(product, "PrescribedTimestamp"); });
        writeText(row, Repeats, [&] { return field(product, "DispensingRepeatNumber") + " ggr"; });
        writeText(row, Packages, [&] { return packages(product); });
        writeText(row, ID, [&] { return field(product, "ID"); });
        writeText(row, ATC, [&] { return field(product, "ATCcode"); });
        writeText(row, RegNr, [&] { return field(product, "RegNr"); });
        writeText(row, Dosage, [&] { return field(product, "UnstructuredDosageAdmin"); });
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
            withCrLf(patient.selectSingleNode("//Patient/PatientData/GeneralInfo").text());
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
                          ", ordinerat av: " + field(product, "PrescribedBy");
    panel.text2 = withCrLf(field(product, "ExtendedMedicalInfo"));
    panel.cmdAllergicHistoryVisible = flagIsSet(product, "AllergicHistory");
    panel.allergic = CInt(field(product, "Allergic")) == 1;
    panel.txtNoteChanged = field(product, "ExtendedMedicalInfoBy") + " - " +
                           field(product, "ExtendedMedicalInfoTimestamp");
    selection.product = panel;
    return selection;
}

} // namespace mirelo::extended_info

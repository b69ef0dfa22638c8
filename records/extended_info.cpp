#include "records/extended_info.h"

#include "records/medication_overview.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

namespace mirelo::extended_info {
namespace {

using cell_alignment::CenterCenter;

// The medication grid's columns but the tick box; the history icon narrower and centred as a
// column, the packages centred, and the dosage heading centred, without the blanks that bring
// the medication grid's left-aligned one towards the middle.
std::vector<GridColumnLayout> layout() {
    std::vector<GridColumnLayout> columns(mirelo::FlexGridLayout().begin(),
                                          mirelo::FlexGridLayout().end());
    columns.erase(columns.begin() + *medication_grid.TickBox);
    columns[grid.HistoryIcon].width = 190;
    columns[grid.HistoryIcon].colAlignment = CenterCenter;
    columns[grid.Packages].cellAlignment = CenterCenter;
    columns[grid.Dosage].heading = "Dosering";
    columns[grid.Dosage].headingAlignment = CenterCenter;
    return columns;
}

// The newest product of each product number, and only if that one has a note or a warning.
const char *const ListedProducts = "//Product[(ExtendedMedicalInfo != \"\" or Allergic = 1) and "
                                   "(not(RegNr = preceding::RegNr))]";

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

    ProductRowWriter writer(grid, FlexGridLayout(), images, result);
    for (const platform::XmlNode &product : patient.selectNodes(ListedProducts)) {
        writer.writeRow(product);
    }
    // Twins among all the listed products, current and past alike.
    writer.markDuplicateAtc(static_cast<int>(result.rows.size()));
}

} // namespace

std::span<const GridColumnLayout> FlexGridLayout() {
    static const std::vector<GridColumnLayout> columns = layout();
    return columns;
}

Fill FillFlexGrid(const platform::XmlDocument &patient, bool loadGeneralNote, int gridRows) {
    return FillKeepingFailure<Fill>(gridRows,
                                    [&](Fill &result) { fill(patient, loadGeneralNote, result); });
}

Fill ReadPatientFolder(const std::string &pnr, bool loadGeneralNote, int gridRows) {
    return FillKeepingFailure<Fill>(gridRows, [&](Fill &result) {
        result = FillFlexGrid(ReadPatientFolderFile(pnr).patient, loadGeneralNote, gridRows);
    });
}

RowSearch RowOfProduct(const ShownGrid &shown, const std::string &id, const std::string &regNr) {
    return SearchById(shown, id, [&] {
        const std::optional<int> byId = FirstRowWith(shown, grid.ID, id, shown.currentRow);
        return byId ? byId : FirstRowWith(shown, grid.RegNr, regNr, shown.currentRow);
    });
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

#include "records/medication_overview.h"

#include "records/product_fields.h"

namespace mirelo {
namespace {

using cell_alignment::CenterCenter;
using cell_alignment::LeftCenter;
using cell_alignment::RightBottom;

// The blanks in front of the hidden captions and the dosage heading are part of them: they
// bring a left-aligned heading towards the middle of its cell.
const std::array<GridColumnLayout, medication_grid.Cols> Layout = {{
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

void fill(const platform::XmlDocument &patient, bool showAll, MedicationOverview &view) {
    view.cleared = true;
    view.txtPnr = patient.firstElementAt("//Patient/PatientData/Pnr").text();
    const std::string givenName =
        patient.firstElementAt("//Patient/PatientData/FirstGivenName").text();
    view.txtFName =
        givenName + " " + patient.firstElementAt("//Patient/PatientData/FamilyName").text();

    const auto [current, past] = ProductsByStanding(patient);
    ProductRowWriter writer(medication_grid, Layout, image_list1, view);
    bool warning = false;
    for (const platform::XmlNode &product : current) {
        warning = writer.writeRow(product) || warning;
    }
    // Only current products are twins: past products and names play no part.
    writer.markDuplicateAtc(static_cast<int>(current.size()));

    if (showAll) {
        for (const platform::XmlNode &product : past) {
            warning = writer.writeRow(product) || warning;
        }
    }
    // A warning on a past product counts even while past products are not shown.
    if (!warning) {
        for (const platform::XmlNode &product : past) {
            warning = ProductFlagIsSet(product, "Allergic") || warning;
        }
    }
    view.standingButton = warning ? ExtendedInfoButton::cmdExtInfo : ExtendedInfoButton::cmdNote;
}

} // namespace

StandingProducts ProductsByStanding(const platform::XmlDocument &patient) {
    // The file keeps the newest product first.
    StandingProducts products;
    for (const platform::XmlNode &product : patient.elementsAt("//Product")) {
        if (ProductCheckedIs(product, "1")) {
            products.current.push_back(product);
        }
        if (ProductCheckedIs(product, "0")) {
            products.past.push_back(product);
        }
    }
    return products;
}

const std::array<GridColumnLayout, medication_grid.Cols> &FlexGridLayout() {
    return Layout;
}

MedicationOverview FillFlexGrid(const platform::XmlDocument &patient, bool showAll, int gridRows) {
    return FillKeepingFailure<MedicationOverview>(
        gridRows, [&](MedicationOverview &view) { fill(patient, showAll, view); });
}

MedicationOverview ReadPatientFolder(const std::string &pnr, bool showAll, int gridRows,
                                     std::optional<PatientReading> *reading) {
    if (reading != nullptr) {
        reading->reset();
    }
    return FillKeepingFailure<MedicationOverview>(gridRows, [&](MedicationOverview &view) {
        PatientReading read = ReadPatientFolderFile(pnr);
        view = FillFlexGrid(read.patient, showAll, gridRows);
        if (reading != nullptr) {
            reading->emplace(std::move(read));
        }
    });
}

} // namespace mirelo

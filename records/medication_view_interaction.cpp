#include "records/medication_view_interaction.h"

#include "core/conversions.h"
#include "records/patient_file.h"
#include "records/product_fields.h"

namespace mirelo {
namespace {

std::string numberAndDescription(const MireloError &error) {
    return std::to_string(error.number()) + " " + error.description();
}

} // namespace

std::optional<DetailPanel> DetailPanelOnSelChange(const std::string &pnr,
                                                  const GridSelection &selection,
                                                  const PatientReading *alreadyRead) {
    const std::string path = PatientFilePath(pnr);
    std::optional<platform::XmlDocument> readNow;
    if (alreadyRead == nullptr || alreadyRead->path != path) {
        readNow.emplace(ReadPatientFile(path));
    }
    const platform::XmlDocument &patient = readNow ? *readNow : alreadyRead->patient;
    const bool onHeading =
        (selection.mouseCol == medication_grid.WarningOrNoteIcon || selection.mouseRow == 0) &&
        selection.row == 0;
    if (onHeading) {
        return std::nullopt;
    }
    DetailPanel panel;
    if (selection.productText.empty()) {
        return panel;
    }
    // Should two products share an ID, the newer, first in the file, is the one shown.
    const platform::XmlNode product =
        patient.selectSingleNode("//Product[ID = \"" + selection.id + "\"]");
    panel.frame1Caption =
        selection.productText + ", ordinerat av: " + ProductField(product, "PrescribedBy");
    panel.label12 = ProductField(product, "InsertedBy");
    panel.label16 = ProductField(product, "InsertedTimestamp");
    panel.label13 = ProductField(product, "TakenOutBy");
    panel.label17 = ProductField(product, "TakenOutTimestamp");
    const bool warning = CBool(ProductField(product, "Allergic"));
    panel.warningLineVisible = warning;
    if (warning) {
        panel.standingButton = ExtendedInfoButton::cmdExtInfo;
    }
    panel.cmdAllergicHistoryVisible = ProductFlagIsSet(product, "AllergicHistory");
    panel.markRow = true;
    return panel;
}

GridClick MeaningOfMouseDown(int button, int mouseRow, int mouseCol, int picture) {
    constexpr int LeftButton = 1;
    if (button != LeftButton) {
        return GridClick::Nothing;
    }
    switch (mouseCol) {
    case *medication_grid.TickBox:
        if (picture == image_list1.ticked) {
            return GridClick::TakeOut;
        }
        return picture == image_list1.unticked ? GridClick::PutBack : GridClick::Nothing;
    case medication_grid.WarningOrNoteIcon:
        return mouseRow != 0 && (picture == image_list1.warning || picture == image_list1.note)
                   ? GridClick::OpenExtendedInfo
                   : GridClick::Nothing;
    case medication_grid.HistoryIcon:
        return mouseRow != 0 && picture == image_list1.allergyHistory
                   ? GridClick::OpenAllergyHistory
                   : GridClick::Nothing;
    default:
        return GridClick::Nothing;
    }
}

ReselectionAfterTick ReselectAfterTick(GridClick tick, bool showAll) {
    return tick == GridClick::TakeOut && !showAll ? ReselectionAfterTick::FirstRow
                                                  : ReselectionAfterTick::ById;
}

RowSearch RowOfId(const ShownGrid &shown, const std::string &id) {
    return SearchById(shown, id,
                      [&] { return FirstRowWith(shown, medication_grid.ID, id, shown.rows - 1); });
}

platform::MsgBoxRequest MouseDownFailureBox(const MireloError &error) {
    return HeldPatientBox(error).value_or(platform::MsgBoxRequest{
        error.description(), platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo"});
}

platform::MsgBoxRequest OpeningFailureBox(const MireloError &error) {
    if (error.number() == errors::PatientFileDamaged ||
        error.number() == errors::PatientFileMissing) {
        return {error.description(), platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop,
                "Mirelo"};
    }
    return {numberAndDescription(error), platform::MsgBoxButtons::OK, platform::MsgBoxIcon::None,
            "Mirelo"};
}

ChkModeFailure ChkModeFailureReport(const MireloError &error) {
    return {OpeningFailureBox(error), error.number() == errors::PatientFileDamaged ||
                                          error.number() == errors::PatientFileMissing};
}

} // namespace mirelo

#include "screens/frmShowPatient.h"

#include "core/application_context.h"
#include "exchange/browser_handoff.h"
#include "exchange/handover_document.h"
#include "platform/gui/flex_grid.h"
#include "platform/message_box.h"
#include "records/medical_list_update.h"
#include "records/medication_view_interaction.h"
#include "records/patient_file.h"
#include "records/printed_medication_list.h"
#include "screens/frmAllergicHistory.h"
#include "screens/frmExtendedInfo.h"
#include "screens/frmMain.h"
#include "screens/frmMedicalNote.h"
#include "screens/frmMedicationListPreview.h"
#include "screens/frmPatInfo.h"
#include "screens/mainApp.h"
#include "screens/product_grid_view.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <optional>

namespace mirelo::screens {

frmShowPatient::frmShowPatient() {
    setObjectName(QStringLiteral("frmShowPatient"));
    setWindowTitle(QStringLiteral("Visa Patient"));
    sizeTwips(this, 11970, 8280);
    setFont(verdana(8.25));
    setAutoFillBackground(true);
    setPalette(QPalette(Qt::white));

    Image2 = makeControl<QLabel>(this, "Image2");
    Image2->setPixmap(QPixmap(QStringLiteral(":/pictures/medication_background.svg")));
    Image2->setGeometry(0, 0, 794, 548);
    Image2->setScaledContents(true);

    Label1 = makeLabel(this, "Label1", QStringLiteral("Patient:"), 360, 360, 1455, 255);
    txtPnr = makeValueLabel(this, "txtPnr", 1080, 360, 510, 195);
    txtFName = makeLabel(this, "txtFName", QString(), 2520, 360, 810, 195);
    txtStreet = makeLabel(this, "txtStreet", QString(), 5640, 420, 2355, 255);
    txtZipCity = makeLabel(this, "txtZipCity", QString(), 5640, 720, 2415, 255);
    cmdPatInfo = makeButton(this, "cmdPatInfo", QStringLiteral("Mer info"), 360, 600, 975, 255);

    Frame1 = makeControl<QGroupBox>(this, "Frame1");
    placeTwips(Frame1, 360, 1320, 6975, 1215);
    Frame1->setAutoFillBackground(true);
    Label9 = makeLabel(Frame1, "Label9", QStringLiteral("Insatt av:"), 120, 300, 945, 195);
    Label12 = makeValueLabel(Frame1, "Label12", 1200, 300, 60, 195, 3720);
    Label15 = makeLabel(Frame1, "Label15", QStringLiteral("Tidpunkt:"), 3720, 300, 915, 195);
    Label16 = makeValueLabel(Frame1, "Label16", 4750, 300, 60, 195);
    Label10 = makeLabel(Frame1, "Label10", QStringLiteral("Utsatt av:"), 120, 600, 945, 195);
    Label13 = makeValueLabel(Frame1, "Label13", 1200, 600, 60, 195, 3720);
    Label14 = makeLabel(Frame1, "Label14", QStringLiteral("Tidpunkt:"), 3720, 600, 915, 195);
    Label17 = makeValueLabel(Frame1, "Label17", 4750, 600, 60, 195);
    // The detail panel's captions stand out in bold.
    for (QLabel *caption : {Label9, Label15, Label10, Label14}) {
        caption->setFont(verdana(8.25, true));
    }
    Image1 = makeControl<QLabel>(Frame1, "Image1");
    placeTwips(Image1, 120, 885, 210, 225);
    Image1->setPixmap(QPixmap(QStringLiteral(":/pictures/warning_small.svg")));
    Image1->setScaledContents(true);
    Image1->hide();
    Label11 = makeLabel(Frame1, "Label11",
                        QStringLiteral("Läkemedlet har notering om läkemedelsöverkänslighet"), 375,
                        915, 4725, 195);
    Label11->hide();
    cmdAllergicHistory =
        makeButton(Frame1, "cmdAllergicHistory", QStringLiteral("Historik"), 5760, 880, 1095, 255);

    cmdExtInfo = makeControl<QToolButton>(this, "cmdExtInfo");
    placeTwips(cmdExtInfo, 9360, 1680, 855, 855);
    cmdExtInfo->setIcon(QIcon(QStringLiteral(":/pictures/warning_large.svg")));
    cmdExtInfo->setIconSize(QSize(43, 43));
    cmdExtInfo->setToolTip(QStringLiteral("Klicka för att se läkemedelsöverkänslighet"));
    cmdNote =
        makeButton(this, "cmdNote", QStringLiteral("Notering om patient"), 8880, 2280, 1935, 285);

    Label6 = makeLabel(this, "Label6",
                       QStringLiteral("Läkemedelslista (Aktuella läkemedel är markerade):"), 360,
                       2750, 4695, 255);
    chkMode = makeControl<QCheckBox>(this, "chkMode", QStringLiteral("Visa alla läkemedel"));
    placeTwips(chkMode, 5820, 2760, 255, 195);
    chkMode->setFont(QFont());
    chkMode->setChecked(true);
    Label8 = makeLabel(this, "Label8", QStringLiteral("Inkludera läkemedelshistorik"), 6060, 2750,
                       2895, 240);

    // The seven pictures, by their place from 1: tick, empty box, warning, two unused letters,
    // note, allergy history.
    FlexGrid = makeProductGrid(
        this, "FlexGrid", medication_grid,
        platform::ImageList::FromFiles(QStringLiteral(":/icons/imagelist1_%1.svg"), 7), 300, 3000,
        11295, 3570);
    FlexGrid->setFont(verdana(8.25));

    Label2 =
        makeLabel(this, "Label2", QStringLiteral("= Notering om preparat"), 570, 6615, 2220, 225);
    Label3 =
        makeLabel(this, "Label3", QStringLiteral("= Historik angående läkemedelsöverkänslighet"),
                  570, 6825, 4035, 210);
    Label4 = makeLabel(this, "Label4", QStringLiteral("= Varning om läkemedelsöverkänslighet"), 570,
                       7035, 4815, 285);
    Label7 = makeLabel(this, "Label7",
                       QStringLiteral("Klicka på \"Ordinera\" för att arbeta med denna patient."),
                       5430, 6765, 2415, 420);
    Label7->setWordWrap(true);
    cmdNyPatient =
        makeButton(this, "cmdNyPatient", QStringLiteral("Välj ny patient"), 8160, 6855, 1815, 285);
    cmdSend = makeButton(this, "cmdSend", QStringLiteral("Ordinera"), 10080, 6855, 1455, 285);
    cmdSend->setDefault(true);
    pressOnEnter(this, cmdSend);
    pressOnEscape(this, cmdNyPatient);
    Label18 = makeLabel(this, "Label18", QStringLiteral("Inloggad som: "), 7560, 7770, 1305, 195);
    txtLoggedIn = makeLabel(this, "txtLoggedIn", QString(), 8880, 7770, 2295, 255);

    connect(FlexGrid, &platform::FlexGrid::SelChange, this, &frmShowPatient::FlexGrid_SelChange);
    connect(FlexGrid, &platform::FlexGrid::MouseDown, this,
            [this](int button) { FlexGrid_MouseDown(button); });
    connect(chkMode, &QCheckBox::clicked, this, &frmShowPatient::chkMode_Click);
    connect(cmdPatInfo, &QPushButton::clicked, this, &frmShowPatient::cmdPatInfo_Click);
    connect(cmdNyPatient, &QPushButton::clicked, this, &frmShowPatient::cmdNyPatient_Click);
    connect(cmdSend, &QPushButton::clicked, this, &frmShowPatient::cmdSend_Click);
    connect(cmdNote, &QPushButton::clicked, this, &frmShowPatient::cmdNote_Click);
    connect(cmdExtInfo, &QToolButton::clicked, this, &frmShowPatient::cmdExtInfo_Click);
    connect(cmdAllergicHistory, &QPushButton::clicked, this,
            &frmShowPatient::cmdAllergicHistory_Click);

    Form_Load();
    // The list is what the physician works in: it has the focus when the patient opens.
    FlexGrid->setFocus();
}

void frmShowPatient::Form_Load() {
    move(px(250), px(200));
    showLoggedIn(Label18, txtLoggedIn, session().gSignature);
    cmdNote->show();
    cmdExtInfo->hide();
}

std::string frmShowPatient::pnr() const {
    return txtPnr->text().toStdString();
}

void frmShowPatient::ReadPatientFolder(const std::string &pnr) {
    showOverview(mirelo::ReadPatientFolder(pnr, chkMode->isChecked(), FlexGrid->Rows(),
                                           sharingReading_ ? &reading_ : nullptr));
}

frmShowPatient::OneReading::OneReading(frmShowPatient &view) : view_(view) {
    view_.sharingReading_ = true;
}

frmShowPatient::OneReading::~OneReading() {
    view_.sharingReading_ = false;
    view_.reading_.reset();
}

// Copies a fill into the grid and the labels. A fill that broke off half-way still shows the
// rows written before the failure; the failure then goes to the caller.
void frmShowPatient::showOverview(const MedicationOverview &overview) {
    showProductRows(FlexGrid, FlexGridLayout(), overview);
    if (overview.txtPnr) {
        showValue(txtPnr, QString::fromStdString(*overview.txtPnr));
    }
    if (overview.txtFName) {
        showValue(txtFName, QString::fromStdString(*overview.txtFName));
    }
    if (overview.standingButton) {
        const bool warning = *overview.standingButton == ExtendedInfoButton::cmdExtInfo;
        cmdNote->setVisible(!warning);
        cmdExtInfo->setVisible(warning);
    }
    if (overview.failure) {
        throw *overview.failure;
    }
}

void frmShowPatient::FlexGrid_SelChange() {
    const int row = FlexGrid->Row();
    const GridSelection selection{FlexGrid->MouseRow(), FlexGrid->MouseCol(), row,
                                  FlexGrid->TextMatrix(row, medication_grid.Product).toStdString(),
                                  FlexGrid->TextMatrix(row, medication_grid.ID).toStdString()};
    const std::optional<DetailPanel> panel =
        DetailPanelOnSelChange(pnr(), selection, reading_ ? &*reading_ : nullptr);
    FlexGrid->setCol(medication_grid.Product);
    if (!panel) {
        return;
    }
    Frame1->setTitle(dataCaption(panel->frame1Caption));
    showValue(Label12, QString::fromStdString(panel->label12));
    showValue(Label16, QString::fromStdString(panel->label16));
    showValue(Label13, QString::fromStdString(panel->label13));
    showValue(Label17, QString::fromStdString(panel->label17));
    cmdAllergicHistory->setVisible(panel->cmdAllergicHistoryVisible);
    if (panel->warningLineVisible) {
        Label11->setVisible(*panel->warningLineVisible);
        Image1->setVisible(*panel->warningLineVisible);
    }
    if (panel->standingButton) {
        const bool warning = *panel->standingButton == ExtendedInfoButton::cmdExtInfo;
        cmdNote->setVisible(!warning);
        cmdExtInfo->setVisible(warning);
    }
    if (panel->markRow) {
        SelectFlexGridRow(FlexGrid, FlexGrid->Row());
    }
}

void frmShowPatient::SelectFlexGridID(const std::string &id) {
    if (!selectFoundRow(FlexGrid, RowOfId(shownGrid(FlexGrid), id),
                        [this] { FlexGrid_SelChange(); })) {
        // The search has no end test of its own: it runs down the ID column past the last row,
        // and setting that row fails.
        FlexGrid->setCol(medication_grid.ID);
        FlexGrid->setRow(FlexGrid->Rows() - 1);
        FlexGrid->setRow(FlexGrid->Rows());
    }
}

void frmShowPatient::FlexGrid_MouseDown(int button) {
    try {
        const int mouseRow = FlexGrid->MouseRow();
        const int mouseCol = FlexGrid->MouseCol();
        const int pictureRow = mouseCol == medication_grid.TickBox ? mouseRow : FlexGrid->Row();
        const GridClick click = MeaningOfMouseDown(button, mouseRow, mouseCol,
                                                   FlexGrid->CellPictureAt(pictureRow, mouseCol));
        if (click == GridClick::TakeOut || click == GridClick::PutBack) {
            tickInOrOut(click, mouseRow);
        } else if (click == GridClick::OpenExtendedInfo) {
            openExtendedInfoOnCurrentRow();
        } else if (click == GridClick::OpenAllergyHistory) {
            openAllergyHistoryOfCurrentRow();
        }
    } catch (const MireloError &error) {
        platform::MsgBox(MouseDownFailureBox(error));
    }
}

void frmShowPatient::tickInOrOut(GridClick click, int row) {
    FlexGrid->setRow(row);
    const std::string id = FlexGrid->TextMatrix(row, medication_grid.ID).toStdString();
    const std::string patient = pnr();
    const platform::XmlDocument written = updateMedicalList(id, patient);
    // The document just written is the file: the grid is filled from it without reading the
    // file again.
    showOverview(FillFlexGrid(written, chkMode->isChecked(), FlexGrid->Rows()));
    // A product taken out gets the note dialog around the reselection, to say why.
    const bool takenOut = click == GridClick::TakeOut;
    if (takenOut) {
        Screen<frmMedicalNote>().ReadPatientFile(id, patient);
    }
    if (ReselectAfterTick(click, chkMode->isChecked()) == ReselectionAfterTick::ById) {
        SelectFlexGridID(id);
    } else {
        FlexGrid->setRow(1);
        FlexGrid_SelChange();
    }
    if (takenOut) {
        Screen<frmMedicalNote>().exec();
    }
}

// The N or triangle of a row: the extended information opens on that product, in place of
// this screen.
void frmShowPatient::openExtendedInfoOnCurrentRow() {
    const int row = FlexGrid->Row();
    const std::string id = FlexGrid->TextMatrix(row, medication_grid.ID).toStdString();
    SelectFlexGridRow(FlexGrid, row);
    frmExtendedInfo &extendedInfo = Screen<frmExtendedInfo>();
    extendedInfo.ReadPatientFolder(pnr());
    Screen<mainApp>().showChild(&extendedInfo);
    Screen<mainApp>().hideChild(this);
    // The search looks no further down than the current row: from the last one it finds the
    // product wherever the fill left off.
    extendedInfo.FlexGrid->setRow(extendedInfo.FlexGrid->Rows() - 1);
    extendedInfo.SelectFlexGridID(id,
                                  FlexGrid->TextMatrix(row, medication_grid.RegNr).toStdString());
}

void frmShowPatient::openAllergyHistoryOfCurrentRow() {
    const int row = FlexGrid->Row();
    const std::string regNr = FlexGrid->TextMatrix(row, medication_grid.RegNr).toStdString();
    const std::string name = FlexGrid->TextMatrix(row, medication_grid.Product).toStdString();
    SelectFlexGridRow(FlexGrid, row);
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    history.listHistory(pnr(), regNr, name);
    history.show();
}

// cmdNote and cmdExtInfo: whichever stands on the screen opens the extended information at
// its first row.
void frmShowPatient::cmdNote_Click() {
    frmExtendedInfo &extendedInfo = Screen<frmExtendedInfo>();
    extendedInfo.ReadPatientFolder(pnr());
    mainApp &frame = Screen<mainApp>();
    frame.hideChild(this);
    frame.placeChild(this, 0, 0);
    extendedInfo.FlexGrid->setRow(1);
    extendedInfo.FlexGrid_SelChange();
    extendedInfo.txtNoteSaved->setText(QString());
    frame.showChild(&extendedInfo);
}

void frmShowPatient::cmdAllergicHistory_Click() {
    openAllergyHistoryOfCurrentRow();
}

void frmShowPatient::chkMode_Click() {
    try {
        const OneReading reading(*this);
        ReadPatientFolder(pnr());
        FlexGrid->setRow(1);
        FlexGrid_SelChange();
    } catch (const MireloError &error) {
        const ChkModeFailure failure = ChkModeFailureReport(error);
        platform::MsgBox(failure.box);
        if (failure.backToSearch) {
            cmdNyPatient_Click();
        }
    }
}

// A file that can't be read here is not caught: the platform's own report ends the process.
void frmShowPatient::cmdPatInfo_Click() {
    frmPatInfo &details = Screen<frmPatInfo>();
    details.ReadPatientFile(pnr());
    details.exec();
}

void frmShowPatient::cmdNyPatient_Click() {
    frmMain &search = Screen<frmMain>();
    Screen<mainApp>().showChild(&search);
    search.txtSearch->setFocus();
    Unload<frmShowPatient>();
}

void frmShowPatient::PrintMedicationList() {
    std::optional<PrintedMedicationList> list;
    try {
        list = ReadPrintedMedicationList(pnr(), chkMode->isChecked(), session().gSignature);
    } catch (const MireloError &error) {
        platform::MsgBox(OpeningFailureBox(error));
        return;
    }
    frmMedicationListPreview preview(std::move(*list), pnr());
    preview.exec();
}

// Hands the patient over to the service. A file that can't be read here is not caught: the
// platform's own report ends the process. The view stays as it is behind the browser.
void frmShowPatient::cmdSend_Click() {
    platform::XmlDocument patient = ReadPatientFile(PatientFilePath(pnr()));
    SubmitPrescriptionXML(CreatePrescriptionXML(&patient, ""));
}

} // namespace mirelo::screens

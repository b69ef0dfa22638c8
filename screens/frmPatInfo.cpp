#include "screens/frmPatInfo.h"

#include "records/patient_details.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace mirelo::screens {
frmPatInfo::frmPatInfo() {
    setUpModalDialog(this, "frmPatInfo", QStringLiteral("Mirelo"), 5160, 2625);

    Frame1 = makeControl<QGroupBox>(this, "Frame1", QStringLiteral("Patientuppgifter"));
    placeTwips(Frame1, 240, 240, 4695, 1815);
    Label1 = makeLabel(Frame1, "Label1", QStringLiteral("Personnr:"), 120, 360, 675, 195);
    txtPnr = makeLabel(Frame1, "txtPnr", QString(), 960, 360, 2535, 255);
    Label2 = makeLabel(Frame1, "Label2", QStringLiteral("Namn:"), 120, 720, 465, 195);
    txtName = makeLabel(Frame1, "txtName", QString(), 960, 720, 3255, 255);
    Label4 = makeLabel(Frame1, "Label4", QStringLiteral("Adress:"), 120, 1080, 525, 195);
    txtAddress = makeLabel(Frame1, "txtAddress", QString(), 960, 1080, 3135, 255);
    Label5 = makeLabel(Frame1, "Label5", QStringLiteral("Postnr, ort:"), 120, 1440, 765, 195);
    txtZipCity = makeLabel(Frame1, "txtZipCity", QString(), 960, 1440, 2895, 255);
    showCaptionsWhole({Label1, Label2, Label4, Label5});
    for (const auto &[caption, value] :
         {std::pair{Label1, txtPnr}, std::pair{Label2, txtName}, std::pair{Label4, txtAddress},
          std::pair{Label5, txtZipCity}}) {
        keepValueApart(caption, value);
    }
    cmdOK = makeButton(this, "cmdOK", QStringLiteral("OK"), 4200, 2160, 735, 255);
    cmdOK->setDefault(true);

    connect(cmdOK, &QPushButton::clicked, this, &frmPatInfo::cmdOK_Click);
}

void frmPatInfo::ReadPatientFile(const std::string &pnr) {
    const PatientDetails details = ReadPatientDetails(pnr);
    txtPnr->setText(QString::fromStdString(details.txtPnr));
    txtName->setText(QString::fromStdString(details.txtName));
    txtAddress->setText(QString::fromStdString(details.txtAddress));
    txtZipCity->setText(QString::fromStdString(details.txtZipCity));
}

void frmPatInfo::cmdOK_Click() {
    Unload<frmPatInfo>();
}

} // namespace mirelo::screens

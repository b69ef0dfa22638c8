#include "screens/frmAbout.h"

#include "build_config.h"
#include "platform/file_system.h"
#include "platform/message_box.h"
#include "platform/system_information.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"
#include "screens/support_contact.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace mirelo::screens {

frmAbout::frmAbout() {
    setUpModalDialog(this, "frmAbout", QStringLiteral("Om Mirelo"), 5820, 3720);

    Image1 = makeControl<QLabel>(this, "Image1");
    placeTwips(Image1, 240, 240, 720, 720);
    Image1->setPixmap(QPixmap(QStringLiteral(":/pictures/about.svg")));
    Image1->setScaledContents(true);
    lblTitle = makeLabel(this, "lblTitle", QString(), 1200, 240, 4380, 480);
    lblTitle->setFont(verdana(14, true));
    lblVersion = makeLabel(this, "lblVersion", QString(), 1200, 780, 4380, 225);

    Frame1 = makeControl<QGroupBox>(this, "Frame1", QStringLiteral("Kontaktinformation"));
    placeTwips(Frame1, 240, 1200, 3840, 2280);
    lblDescription =
        makeLabel(Frame1, "lblDescription", QStringLiteral("Brenmark AB"), 120, 300, 3600, 255);
    Label1 =
        makeLabel(Frame1, "Label1", QString::fromUtf8(support::PostalAddress), 120, 660, 3600, 255);
    Label2 = makeLabel(Frame1, "Label2", QStringLiteral("Telefon: %1").arg(support::Telephone), 120,
                       1020, 3600, 255);
    Label3 = makeLabel(Frame1, "Label3", QStringLiteral("Fax: %1").arg(support::Fax), 120, 1380,
                       3600, 255);
    Label4 = makeLabel(Frame1, "Label4", QStringLiteral("E-post: %1").arg(support::Mail), 120, 1740,
                       3600, 255);

    cmdOK = makeButton(this, "cmdOK", QStringLiteral("OK"), 4245, 2625, 1335, 345);
    cmdOK->setDefault(true);
    cmdSysInfo =
        makeButton(this, "cmdSysInfo", QStringLiteral("&System Info..."), 4245, 3075, 1335, 345);

    connect(cmdOK, &QPushButton::clicked, this, &frmAbout::cmdOK_Click);
    connect(cmdSysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);
    Form_Load();
}

void frmAbout::Form_Load() {
    lblVersion->setText(QStringLiteral("Version %1.%2.%3")
                            .arg(build::versionMajor)
                            .arg(build::versionMinor)
                            .arg(build::versionRevision));
    lblTitle->setText(QStringLiteral("Mirelo"));
}

void frmAbout::cmdOK_Click() {
    Unload<frmAbout>();
}

void frmAbout::cmdSysInfo_Click() {
    StartSysInfo();
}

// This platform has no registry, so both look-ups answer false and the desktop's own tool
// stands in for the registry's.
void StartSysInfo() {
    std::string path;
    if (platform::GetKeyValue(platform::HKEY_LOCAL_MACHINE,
                              "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO", "PATH", path)) {
        if (platform::StartProgram(path)) {
            return;
        }
    } else if (platform::GetKeyValue(platform::HKEY_LOCAL_MACHINE,
                                     "SOFTWARE\\Microsoft\\Shared Tools Location", "MSINFO",
                                     path)) {
        if (platform::FileExists(path + "/MSINFO32.EXE") &&
            platform::StartProgram(path + "/MSINFO32.EXE")) {
            return;
        }
    } else if (platform::StartSystemInformationTool()) {
        return;
    }
    platform::MsgBox("System Information Is Unavailable At This Time");
}

} // namespace mirelo::screens

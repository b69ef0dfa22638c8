#pragma once

#include <QDialog>

class QGroupBox;
class QLabel;
class QPushButton;

namespace mirelo::screens {

// Which program this is, its version, and whom to contact; it can start the system
// information tool for a support call.
class frmAbout : public QDialog {
    Q_OBJECT

  public:
    frmAbout();

    QLabel *Image1;
    QLabel *lblTitle;
    QLabel *lblVersion;
    QGroupBox *Frame1;
    QLabel *lblDescription;
    QLabel *Label1;
    QLabel *Label2;
    QLabel *Label3;
    QLabel *Label4;
    QPushButton *cmdOK;
    QPushButton *cmdSysInfo;

    void Form_Load();
    void cmdOK_Click();
    void cmdSysInfo_Click();

  protected:
    void reject() override { cmdOK_Click(); }
};

// Starts the system information tool: the one the registry names, else one installed on the
// machine, else a message that there is none.
void StartSysInfo();

} // namespace mirelo::screens

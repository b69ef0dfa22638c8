#pragma once

#include <QDialog>
#include <string>

class QGroupBox;
class QLabel;
class QPushButton;

namespace mirelo::screens {

// Who the patient is and where the patient lives, read from the patient's file; nothing here
// can be changed.
class frmPatInfo : public QDialog {
    Q_OBJECT

  public:
    frmPatInfo();

    QGroupBox *Frame1;
    QLabel *Label1;
    QLabel *txtPnr;
    QLabel *Label2;
    QLabel *txtName;
    QLabel *Label4;
    QLabel *txtAddress;
    QLabel *Label5;
    QLabel *txtZipCity;
    QPushButton *cmdOK;

    // Fills the dialog; the caller then shows it modally. Nothing is caught here: a missing or
    // damaged file goes to the caller.
    void ReadPatientFile(const std::string &pnr);
    void cmdOK_Click();

  protected:
    void reject() override { cmdOK_Click(); }
};

} // namespace mirelo::screens

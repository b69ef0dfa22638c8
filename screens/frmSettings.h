#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace mirelo::screens {

// Where the patient files are kept. A new folder counts from OK on, for this run and the next;
// the files already in the old folder stay there.
class frmSettings : public QDialog {
    Q_OBJECT

  public:
    frmSettings();

    QLineEdit *txtPath;
    QPushButton *cmdBrowse;
    QPushButton *OKButton;
    QLabel *Label2;
    QPushButton *CancelButton;

    void Form_Load();
    void cmdBrowse_Click();
    void OKButton_Click();
    void CancelButton_Click();

  protected:
    void reject() override { CancelButton_Click(); }
};

} // namespace mirelo::screens

#pragma once

#include <QDialog>
#include <string>

class QGroupBox;
class QPushButton;

namespace mirelo::platform {
class FlexGrid;
}

namespace mirelo::screens {

// The history of a product's warning of hypersensitivity, newest first. It only reads.
class frmAllergicHistory : public QDialog {
    Q_OBJECT

  public:
    frmAllergicHistory();

    QGroupBox *Frame1;
    platform::FlexGrid *FlexGrid;
    QPushButton *cmdBack;

    // Fills the list for a product; the caller then shows the dialog, modally or not. A
    // failure is shown here, and the dialog keeps what was filled up to it.
    void listHistory(const std::string &pnr, const std::string &regNr, const std::string &name);
    void SetupHistoryGrid();
    void cmdBack_Click();

  protected:
    void closeEvent(QCloseEvent *event) override;
    void reject() override { cmdBack_Click(); }
};

} // namespace mirelo::screens

#pragma once

#include "records/medication_view_interaction.h"

#include <QWidget>
#include <string>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QToolButton;

namespace mirelo::platform {
class FlexGrid;
}

namespace mirelo::screens {

// The medication view: who the patient is and every product of the patient's list in one
// grid, with the detail panel of the selected product. The patient is known only by the
// caption of txtPnr; every action goes back to the file.
class frmShowPatient : public QWidget {
    Q_OBJECT

  public:
    frmShowPatient();

    QLabel *Image2;
    QLabel *Label1;
    QLabel *txtPnr;
    QLabel *txtFName;
    QLabel *txtStreet;
    QLabel *txtZipCity;
    QPushButton *cmdPatInfo;
    QGroupBox *Frame1;
    QLabel *Label9;
    QLabel *Label12;
    QLabel *Label15;
    QLabel *Label16;
    QLabel *Label10;
    QLabel *Label13;
    QLabel *Label14;
    QLabel *Label17;
    QLabel *Image1;
    QLabel *Label11;
    QPushButton *cmdAllergicHistory;
    QToolButton *cmdExtInfo;
    QPushButton *cmdNote;
    QLabel *Label6;
    QCheckBox *chkMode;
    QLabel *Label8;
    platform::FlexGrid *FlexGrid;
    QLabel *Label2;
    QLabel *Label3;
    QLabel *Label4;
    QLabel *Label7;
    QPushButton *cmdNyPatient;
    QPushButton *cmdSend;
    QLabel *Label18;
    QLabel *txtLoggedIn;

    void Form_Load();
    // Reads the patient's file and fills the grid; the caller owns the selection.
    void ReadPatientFolder(const std::string &pnr);

    // While one lives, the file the fill read serves the selection that follows in the same
    // action (opening a patient, switching the list's mode), instead of being read again.
    class OneReading {
      public:
        explicit OneReading(frmShowPatient &view);
        ~OneReading();
        OneReading(const OneReading &) = delete;
        OneReading &operator=(const OneReading &) = delete;

      private:
        frmShowPatient &view_;
    };

    void FlexGrid_SelChange();
    void FlexGrid_MouseDown(int button);
    void SelectFlexGridID(const std::string &id);
    void chkMode_Click();
    void cmdPatInfo_Click();
    void cmdNyPatient_Click();
    void cmdSend_Click();
    void cmdNote_Click();
    void cmdExtInfo_Click() { cmdNote_Click(); }
    void cmdAllergicHistory_Click();
    // The patient's list read afresh from the file into a print preview; a file that can't be
    // read shows the box that opening the view shows, and nothing more.
    void PrintMedicationList();

  private:
    void openExtendedInfoOnCurrentRow();
    void openAllergyHistoryOfCurrentRow();
    void showOverview(const MedicationOverview &overview);
    void tickInOrOut(GridClick click, int row);
    std::string pnr() const;

    bool sharingReading_ = false;
    std::optional<PatientReading> reading_;
};

} // namespace mirelo::screens

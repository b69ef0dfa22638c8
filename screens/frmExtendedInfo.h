#pragma once

#include "screens/allergy_reason_opener.h"

#include <QWidget>
#include <string>

class QCheckBox;
class QGroupBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace mirelo::extended_info {
struct Fill;
}

namespace mirelo::platform {
class FlexGrid;
}

namespace mirelo::screens {

// The physician's own entries on one patient: the products that carry a note or a warning,
// the note and warning of the picked one, and the general note. It stands in the place of the
// medication view while open. Edits are saved when the user leaves a text box; there is no
// save button.
class frmExtendedInfo : public QWidget, public AllergyReasonOpener {
    Q_OBJECT

  public:
    frmExtendedInfo();

    QLabel *Image1;
    QGroupBox *Frame2;
    QPlainTextEdit *Text2;
    QLabel *Label4;
    // Who last changed the note, and when; its tag holds the ID of the picked product.
    QLabel *txtNoteChanged;
    QCheckBox *chkAllergic;
    QLabel *Label1;
    QPushButton *cmdAllergicHistory;
    QPushButton *cmdDeleteNote;
    platform::FlexGrid *FlexGrid;
    QGroupBox *Frame1;
    QPlainTextEdit *Text1;
    QLabel *Label2;
    QLabel *Label3;
    QLabel *txtNoteSaved;
    QPushButton *cmdClose;
    QLabel *Label18;
    QLabel *txtLoggedIn;

    // The patient on the screen. Like the two flags below it outlives the screen's closing.
    static std::string Pnr;
    // Set by every change of the box that isn't the program's own, and never cleared: once
    // the user has typed in a box, every later leaving of that box saves again, for as long
    // as the program runs, whichever patient is on the screen.
    static bool Text1Changed;
    static bool Text2Changed;

    void Form_Load();
    void ReadPatientFolder(const std::string &pnr);
    // Shows the product of the current row, wherever the grid's pointer is: the screen opens on a
    // row, and comes back to one after a refill, this way.
    void FlexGrid_SelChange();
    void SelectFlexGridID(const std::string &id, const std::string &regNr);

    void SaveGeneralInfo();
    void SaveProductNote();

    // What the reason dialog reaches for when this screen opened it.
    QCheckBox *allergicBox() override { return chkAllergic; }
    void emptyNoteBox() override;
    void SaveAllergicHistory() override;
    // Deletes the note of the product on show; shows its own failures.
    void deleteNote() override;

    void Text1_Change();
    void Text2_Change();
    void Text1_LostFocus();
    void Text2_LostFocus();
    // Saves the text box the focus stands in as leaving it saves it: the screen or the program is
    // going, and the focus will not leave it by itself first.
    void leaveTextBox();
    void FlexGrid_MouseDown();
    void chkAllergic_Click();
    void cmdDeleteNote_Click();
    void cmdAllergicHistory_Click();
    void cmdClose_Click();

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void showSelection(int pointerRow);
    void showNoProduct();
    void FillFlexGrid(const extended_info::Fill &fill);
    void showHistory(int regNrCol, bool modal);
};

} // namespace mirelo::screens

#pragma once

#include <QDialog>
#include <string>

class QGroupBox;
class QPlainTextEdit;
class QPushButton;

namespace mirelo::screens {

// Asks why the warning of hypersensitivity changes, and carries the change out. It answers
// nothing to its opener: OK and Avbryt reach into the opener named by Caller (see
// AllergyReasonOpener). The only road to a history record.
class frmAllergicExtendedInfo : public QDialog {
    Q_OBJECT

  public:
    frmAllergicExtendedInfo();

    QGroupBox *Frame1;
    QPlainTextEdit *txtExtendedMedicalInfo;
    QPushButton *cmdCancel;
    QPushButton *cmdSave;

    // Set by the opener before each showing. DeletingNote: the reason goes with the deletion
    // of a note, rather than with a click on the box. Caller: "ShowPat" for the note dialog,
    // "ExtInfo" for the extended information.
    bool DeletingNote = false;
    std::string Caller;

    void cmdSave_Click();
    void cmdCancel_Click();

  protected:
    void reject() override {}
};

} // namespace mirelo::screens

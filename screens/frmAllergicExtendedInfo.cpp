#include "screens/frmAllergicExtendedInfo.h"

#include "records/note_records.h"
#include "screens/allergy_reason_opener.h"
#include "screens/control_tag.h"
#include "screens/dialog_window.h"
#include "screens/note_text_box.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>

namespace mirelo::screens {
namespace {

const char *const NoClick = "NoClick";

// Changes the opener's box without its change event opening this dialog again.
void setWithoutClick(QCheckBox *box, bool checked) {
    setTag(box, NoClick);
    box->setChecked(checked);
    setTag(box, QString());
}

} // namespace

frmAllergicExtendedInfo::frmAllergicExtendedInfo() {
    setUpDialogWindow(this, CloseBox::None);
    setObjectName(QStringLiteral("frmAllergicExtendedInfo"));
    setWindowTitle(QStringLiteral("Mirelo"));
    setModal(true);
    sizeTwips(this, 6765, 2385);
    setFont(dialogFont());

    Frame1 = makeControl<QGroupBox>(
        this, "Frame1", QStringLiteral("Anledning till förändring av status för överkänslighet"));
    placeTwips(Frame1, 120, 120, 6495, 1695);
    txtExtendedMedicalInfo =
        makeNoteTextBox(Frame1, "txtExtendedMedicalInfo", 120, 360, 6255, 1215);
    cmdCancel = makeButton(this, "cmdCancel", QStringLiteral("Avbryt"), 4560, 1920, 975, 255);
    cmdSave = makeButton(this, "cmdSave", QStringLiteral("OK"), 5640, 1920, 975, 255);
    pressOnEnterWhenFocused(cmdCancel);
    pressOnEnterWhenFocused(cmdSave);
    applyTabOrder({{0, txtExtendedMedicalInfo}, {1, cmdCancel}, {2, cmdSave}});

    connect(cmdSave, &QPushButton::clicked, this, &frmAllergicExtendedInfo::cmdSave_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmAllergicExtendedInfo::cmdCancel_Click);
}

// A failure leaves the dialog open with the reason typed, so the save can be tried again.
void frmAllergicExtendedInfo::cmdSave_Click() {
    try {
        if (AllergyReasonOpener *opener = OpenerNamed(Caller)) {
            if (DeletingNote) {
                setWithoutClick(opener->allergicBox(), false);
                opener->emptyNoteBox();
                opener->SaveAllergicHistory();
                // The note dialog closes itself when it has deleted; this dialog goes first.
                if (Caller == "ShowPat") {
                    Unload<frmAllergicExtendedInfo>();
                }
                opener->deleteNote();
            } else {
                opener->SaveAllergicHistory();
            }
        }
        Unload<frmAllergicExtendedInfo>();
    } catch (const MireloError &error) {
        ReportReasonDialogFailure(error);
    }
}

// Puts back a box the user clicked; a deletion is simply not done. Nothing is written.
void frmAllergicExtendedInfo::cmdCancel_Click() {
    if (!DeletingNote) {
        if (AllergyReasonOpener *opener = OpenerNamed(Caller)) {
            QCheckBox *box = opener->allergicBox();
            setWithoutClick(box, !box->isChecked());
        }
    }
    Unload<frmAllergicExtendedInfo>();
}

} // namespace mirelo::screens

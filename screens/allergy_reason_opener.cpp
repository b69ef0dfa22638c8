#include "screens/allergy_reason_opener.h"

#include "platform/message_box.h"
#include "screens/frmAllergicExtendedInfo.h"
#include "screens/frmExtendedInfo.h"
#include "screens/frmMedicalNote.h"
#include "screens/screen_instance.h"

#include <QCheckBox>

namespace mirelo::screens {

AllergyReasonOpener *OpenerNamed(const std::string &caller) {
    // "ShowPat" is the note dialog that the medication view brings up, not the view itself.
    if (caller == "ShowPat") {
        return &Screen<frmMedicalNote>();
    }
    if (caller == "ExtInfo") {
        return &Screen<frmExtendedInfo>();
    }
    return nullptr;
}

void AllergyReasonOpener::askForReason(bool deletingNote) {
    frmAllergicExtendedInfo &reason = Screen<frmAllergicExtendedInfo>();
    reason.DeletingNote = deletingNote;
    reason.Caller = caller_;
    reason.exec();
}

void AllergyReasonOpener::askToDeleteNote() {
    const std::string question = "Är du säker på att du vill ta bort notering?";
    const std::string text =
        allergicBox()->isChecked()
            ? "Denna notering innehåller varning om läkemedelsöverkänslighet.\r\n" + question
            : question;
    if (platform::MsgBox(text, platform::MsgBoxButtons::YesNo, platform::MsgBoxIcon::Warning) !=
        platform::MsgBoxResult::Yes) {
        return;
    }
    if (allergicBox()->isChecked()) {
        askForReason(true);
    } else {
        deleteNote();
    }
}

} // namespace mirelo::screens

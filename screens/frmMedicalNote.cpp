#include "screens/frmMedicalNote.h"

#include "core/application_context.h"
#include "records/medical_note_view.h"
#include "records/note_records.h"
#include "screens/control_tag.h"
#include "screens/dialog_window.h"
#include "screens/frmAllergicExtendedInfo.h"
#include "screens/frmShowPatient.h"
#include "screens/note_text_box.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace mirelo::screens {
namespace {

const char *const NoClick = "NoClick";

} // namespace

frmMedicalNote::frmMedicalNote() : AllergyReasonOpener("ShowPat") {
    setUpDialogWindow(this, CloseBox::None);
    setObjectName(QStringLiteral("frmMedicalNote"));
    setWindowTitle(QStringLiteral("Mirelo"));
    setModal(true);
    sizeTwips(this, 8985, 2430);
    setFont(dialogFont());

    Frame1 = makeControl<QGroupBox>(this, "Frame1");
    placeTwips(Frame1, 120, 120, 8535, 1695);
    txtExtendedMedicalInfo =
        makeNoteTextBox(Frame1, "txtExtendedMedicalInfo", 120, 360, 8295, 1215);
    // The box's own caption is cut off by its narrow width; Label1 beside it is the caption
    // the user reads.
    chkAllergic = makeControl<QCheckBox>(this, "chkAllergic", QStringLiteral("Check1"));
    placeTwips(chkAllergic, 240, 1920, 255, 255);
    Label1 = makeLabel(this, "Label1", QStringLiteral("Överkänslighet"), 480, 1950, 1065, 195);
    showCaptionsWhole({Label1});
    cmdDelete =
        makeButton(this, "cmdDelete", QStringLiteral("Ta bort notering"), 6240, 1920, 1335, 255);
    cmdSave = makeButton(this, "cmdSave", QStringLiteral("OK"), 7680, 1920, 975, 255);
    pressOnEnterWhenFocused(cmdDelete);
    pressOnEnterWhenFocused(cmdSave);
    applyTabOrder({{0, txtExtendedMedicalInfo}, {1, chkAllergic}, {2, cmdDelete}, {3, cmdSave}});

    connect(chkAllergic, &QCheckBox::toggled, this, &frmMedicalNote::chkAllergic_Click);
    connect(cmdSave, &QPushButton::clicked, this, &frmMedicalNote::cmdSave_Click);
    connect(cmdDelete, &QPushButton::clicked, this, &frmMedicalNote::cmdDelete_Click);
}

void frmMedicalNote::ReadPatientFile(const std::string &id, const std::string &pnr) {
    ID = id;
    Pnr = pnr;
    const MedicalNoteView view = ReadMedicalNoteView(Pnr, ID);
    Frame1->setTitle(dataCaption(view.frame1Caption));
    setBoxText(txtExtendedMedicalInfo, view.note);
    // Filling the box is not the user's click: no reason is asked for.
    setTag(chkAllergic, NoClick);
    chkAllergic->setChecked(view.allergic != 0);
    setTag(chkAllergic, QString());
}

int frmMedicalNote::allergic() const {
    return chkAllergic->isChecked() ? 1 : 0;
}

// The box has changed already; the reason dialog saves the new state or puts the box back.
void frmMedicalNote::chkAllergic_Click() {
    if (Tag(chkAllergic) != NoClick) {
        askForReason(false);
    }
}

// OK always rewrites the note from the box and signs it, changed or not.
void frmMedicalNote::cmdSave_Click() {
    try {
        SaveMedicalNote(Pnr, ID, BoxText(txtExtendedMedicalInfo), allergic(), session().gSignature);
        Screen<frmShowPatient>().ReadPatientFolder(Pnr);
        Unload<frmMedicalNote>();
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

void frmMedicalNote::cmdDelete_Click() {
    try {
        askToDeleteNote();
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

void frmMedicalNote::emptyNoteBox() {
    txtExtendedMedicalInfo->clear();
}

void frmMedicalNote::SaveAllergicHistory() {
    mirelo::SaveAllergicHistory(Pnr, ID, allergic(),
                                BoxText(Screen<frmAllergicExtendedInfo>().txtExtendedMedicalInfo),
                                session().gSignature, NoteScreen::MedicalNote);
}

void frmMedicalNote::deleteNote() {
    mirelo::deleteNote(Pnr, ID, session().gSignature, NoteScreen::MedicalNote);
    Screen<frmShowPatient>().ReadPatientFolder(Pnr);
    Unload<frmMedicalNote>();
}

} // namespace mirelo::screens

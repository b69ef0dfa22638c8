#include "screens/frmExtendedInfo.h"

#include "core/application_context.h"
#include "platform/gui/flex_grid.h"
#include "records/extended_info.h"
#include "records/note_records.h"
#include "screens/control_tag.h"
#include "screens/frmAllergicExtendedInfo.h"
#include "screens/frmAllergicHistory.h"
#include "screens/frmShowPatient.h"
#include "screens/mainApp.h"
#include "screens/note_text_box.h"
#include "screens/product_grid_view.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QCheckBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace mirelo::screens {
namespace {

using extended_info::grid;

const QString NoChange = QStringLiteral("NoChange");
const QString NoClick = QStringLiteral("NoClick");

} // namespace

std::string frmExtendedInfo::Pnr;
bool frmExtendedInfo::Text1Changed = false;
bool frmExtendedInfo::Text2Changed = false;

frmExtendedInfo::frmExtendedInfo() : AllergyReasonOpener("ExtInfo") {
    setObjectName(QStringLiteral("frmExtendedInfo"));
    setWindowTitle(QStringLiteral("Mirelo"));
    sizeTwips(this, 11910, 8250);
    // Only the line of who is logged in names Verdana.
    setFont(dialogFont());

    Image1 = makeControl<QLabel>(this, "Image1");
    placeTwips(Image1, 0, 0, 11910, 8220);
    Image1->setPixmap(QPixmap(QStringLiteral(":/pictures/extended_info_background.svg")));
    Image1->setScaledContents(true);

    Frame2 = makeControl<QGroupBox>(this, "Frame2");
    placeTwips(Frame2, 360, 240, 11265, 4380);
    Text2 = makeNoteTextBox(Frame2, "Text2", 120, 240, 10995, 435);
    Label4 = makeLabel(Frame2, "Label4", QStringLiteral("Senast ändrad av:"), 120, 765, 1305, 195);
    txtNoteChanged = makeLabel(Frame2, "txtNoteChanged", QString(), 1560, 765, 3615, 255);
    chkAllergic = makeControl<QCheckBox>(Frame2, "chkAllergic");
    placeTwips(chkAllergic, 5505, 780, 255, 195);
    Label1 = makeLabel(Frame2, "Label1", QStringLiteral("Överkänslighet"), 5760, 780, 1065, 195);
    cmdAllergicHistory =
        makeButton(Frame2, "cmdAllergicHistory", QStringLiteral("Historik"), 9045, 780, 975, 255);
    cmdDeleteNote =
        makeButton(Frame2, "cmdDeleteNote", QStringLiteral("Ta bort"), 10125, 780, 975, 255);
    // The three icons: warning, note, allergy history.
    FlexGrid = makeProductGrid(
        Frame2, "FlexGrid", grid,
        platform::ImageList::FromFiles(QStringLiteral(":/icons/extendedinfo_%1.svg"), 3), 120, 1200,
        10995, 3000);

    Frame1 = makeControl<QGroupBox>(this, "Frame1");
    placeTwips(Frame1, 360, 5040, 11280, 1980);
    Text1 = makeNoteTextBox(Frame1, "Text1", 120, 240, 10980, 1365);
    Label2 = makeLabel(Frame1, "Label2", QStringLiteral("Senast ändrad av:"), 120, 1710, 1425, 180);
    Label3 = makeLabel(Frame1, "Label3", QString(), 1560, 1710, 3525, 195);
    txtNoteSaved = makeLabel(Frame1, "txtNoteSaved", QString(), 8040, 1370, 45, 195);

    showCaptionsWhole({Label4, Label1, Label2});
    // Who changed a note and when show whole, up to the warning box and the saved mark.
    txtNoteChanged->setMinimumWidth(txtNoteChanged->width());
    txtNoteChanged->setMaximumWidth(chkAllergic->x() - txtNoteChanged->x());
    Label3->setMinimumWidth(Label3->width());
    Label3->setMaximumWidth(txtNoteSaved->x() - Label3->x());

    cmdClose = makeButton(this, "cmdClose", QStringLiteral("Återgå"), 10680, 7080, 975, 270);
    Label18 = makeLabel(this, "Label18", QStringLiteral("Inloggad som: "), 7560, 7770, 1305, 210);
    Label18->setFont(verdana(8.25));
    txtLoggedIn = makeLabel(this, "txtLoggedIn", QString(), 8880, 7770, 3120, 270);
    txtLoggedIn->setFont(verdana(8.25));

    applyTabOrder({{0, Text2},
                   {1, chkAllergic},
                   {2, cmdAllergicHistory},
                   {3, cmdDeleteNote},
                   {4, FlexGrid},
                   {5, Text1},
                   {6, cmdClose}});

    connect(Text1, &QPlainTextEdit::textChanged, this, &frmExtendedInfo::Text1_Change);
    connect(Text2, &QPlainTextEdit::textChanged, this, &frmExtendedInfo::Text2_Change);
    Text1->installEventFilter(this);
    Text2->installEventFilter(this);
    // The grid's own event shows nothing while its pointer is on the heading or has not been on
    // the grid.
    connect(FlexGrid, &platform::FlexGrid::SelChange, this,
            [this] { showSelection(FlexGrid->MouseRow()); });
    connect(FlexGrid, &platform::FlexGrid::MouseDown, this, &frmExtendedInfo::FlexGrid_MouseDown);
    // The box's every change, the program's own too, as the tag tells them apart.
    connect(chkAllergic, &QCheckBox::toggled, this, &frmExtendedInfo::chkAllergic_Click);
    connect(cmdAllergicHistory, &QPushButton::clicked, this,
            &frmExtendedInfo::cmdAllergicHistory_Click);
    connect(cmdDeleteNote, &QPushButton::clicked, this, &frmExtendedInfo::cmdDeleteNote_Click);
    connect(cmdClose, &QPushButton::clicked, this, &frmExtendedInfo::cmdClose_Click);

    // Until a product is shown, nothing can act on one.
    showNoProduct();
    Form_Load();
}

void frmExtendedInfo::Form_Load() {
    move(0, 0);
    showLoggedIn(Label18, txtLoggedIn, session().gSignature);
}

// Leaving a box is the focus going to another control of the program; a window that merely
// loses the focus to a box or a menu has not been left, nor has a screen that is going, whose
// road out has left its box already.
bool frmExtendedInfo::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::FocusOut && isVisible()) {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            if (watched == Text1) {
                Text1_LostFocus();
            } else if (watched == Text2) {
                Text2_LostFocus();
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmExtendedInfo::ReadPatientFolder(const std::string &pnr) {
    Pnr = pnr;
    // Refills from this screen come while the medication view is hidden: they leave the
    // general note alone, so that a half-typed one survives.
    const bool loadGeneralNote = Screen<frmShowPatient>().isVisible();
    FillFlexGrid(extended_info::ReadPatientFolder(pnr, loadGeneralNote, FlexGrid->Rows()));
}

// Copies a fill onto the screen. A fill that broke off half-way still shows what it wrote
// before the failure, which then goes to the caller.
void frmExtendedInfo::FillFlexGrid(const extended_info::Fill &fill) {
    showProductRows(FlexGrid, extended_info::FlexGridLayout(), fill);
    if (fill.frame1Caption) {
        Frame1->setTitle(dataCaption(*fill.frame1Caption));
    }
    if (fill.text1) {
        setTag(Text1, NoChange);
        setBoxText(Text1, *fill.text1);
        setTag(Text1, QString());
    }
    if (fill.label3) {
        showValue(Label3, QString::fromStdString(*fill.label3));
    }
    if (fill.failure) {
        throw *fill.failure;
    }
}

void frmExtendedInfo::FlexGrid_SelChange() {
    showSelection(FlexGrid->Row());
}

// Reads the file on every selection. No handler of its own: a damaged file found by a click
// in the grid ends the process with the platform's report.
void frmExtendedInfo::showSelection(int pointerRow) {
    const int row = FlexGrid->Row();
    const extended_info::Selection selection = extended_info::SelectionOf(
        Pnr, pointerRow, FlexGrid->TextMatrix(row, grid.Product).toStdString(),
        FlexGrid->TextMatrix(row, grid.ID).toStdString());
    FlexGrid->setCol(grid.Product);
    if (selection.showsNothing) {
        return;
    }
    if (const auto &product = selection.product) {
        Text2->setEnabled(true);
        chkAllergic->setVisible(true);
        cmdDeleteNote->setVisible(true);
        chkAllergic->setEnabled(true);
        setTag(txtNoteChanged, QString::fromStdString(product->id));
        Frame2->setTitle(dataCaption(product->frame2Caption));
        setTag(Text2, NoChange);
        setBoxText(Text2, product->text2);
        setTag(Text2, QString());
        cmdAllergicHistory->setVisible(product->cmdAllergicHistoryVisible);
        setTag(chkAllergic, NoClick);
        chkAllergic->setChecked(product->allergic);
        setTag(chkAllergic, QString());
        showValue(txtNoteChanged, QString::fromStdString(product->txtNoteChanged));
        SelectFlexGridRow(FlexGrid, FlexGrid->Row());
        return;
    }
    showNoProduct();
}

// A blank row: nothing to edit. The marking of the row stays as it is.
void frmExtendedInfo::showNoProduct() {
    Frame2->setTitle(QString());
    setTag(Text2, NoChange);
    Text2->clear();
    setTag(Text2, QString());
    setTag(chkAllergic, NoClick);
    chkAllergic->setChecked(false);
    setTag(chkAllergic, QString());
    setTag(txtNoteChanged, QString());
    txtNoteChanged->clear();
    Text2->setEnabled(false);
    chkAllergic->setVisible(false);
    cmdDeleteNote->setVisible(false);
    chkAllergic->setEnabled(false);
    cmdAllergicHistory->setVisible(false);
}

void frmExtendedInfo::SelectFlexGridID(const std::string &id, const std::string &regNr) {
    if (!selectFoundRow(FlexGrid, extended_info::RowOfProduct(shownGrid(FlexGrid), id, regNr),
                        [this] { FlexGrid_SelChange(); })) {
        // The search ended in the product number's column.
        FlexGrid->setCol(grid.RegNr);
    }
}

void frmExtendedInfo::SaveGeneralInfo() {
    const GeneralInfoMarks marks{
        [this](const std::string &tag) { setTag(Text1, QString::fromStdString(tag)); },
        [this](const std::string &caption) { showValue(Label3, QString::fromStdString(caption)); }};
    mirelo::SaveGeneralInfo(Pnr, BoxText(Text1), session().gSignature, marks);
}

void frmExtendedInfo::SaveProductNote() {
    mirelo::SaveProductNote(Pnr, Tag(txtNoteChanged).toStdString(), BoxText(Text2),
                            session().gSignature, [this](const std::string &caption) {
                                showValue(txtNoteChanged, QString::fromStdString(caption));
                            });
}

// The product is the one on show, whose ID its panel took when it was shown: a refill before
// the deletion, after a warning was taken away, may leave another row current. Its note leaves
// the list at the refill, and the selection goes back to the first row.
void frmExtendedInfo::deleteNote() {
    try {
        const std::string id = Tag(txtNoteChanged).toStdString();
        mirelo::deleteNote(Pnr, id, session().gSignature, NoteScreen::ExtendedInfo);
        Screen<frmShowPatient>().ReadPatientFolder(Pnr);
        ReadPatientFolder(Pnr);
        FlexGrid->setRow(1);
        FlexGrid_SelChange();
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

// The product is the one on show; the warning is the box's state and the reason is the reason
// dialog's, which is open while this runs. The row is sought again after the refill.
void frmExtendedInfo::SaveAllergicHistory() {
    const std::string id = Tag(txtNoteChanged).toStdString();
    mirelo::SaveAllergicHistory(Pnr, id, chkAllergic->isChecked() ? 1 : 0,
                                BoxText(Screen<frmAllergicExtendedInfo>().txtExtendedMedicalInfo),
                                session().gSignature, NoteScreen::ExtendedInfo);
    ReadPatientFolder(Pnr);
    SelectFlexGridID(id, "");
}

// Not under the "NoChange" guard: the emptying counts as the user's change of the note.
void frmExtendedInfo::emptyNoteBox() {
    Text2->clear();
}

// The box has changed already; the reason dialog saves the new state or puts the box back.
void frmExtendedInfo::chkAllergic_Click() {
    if (Tag(chkAllergic) != NoClick) {
        askForReason(false);
    }
}

void frmExtendedInfo::cmdDeleteNote_Click() {
    askToDeleteNote();
}

// The button hands over the dosage column where the icon hands over the product number, so it
// finds no records as a rule: that is how the button has always worked.
void frmExtendedInfo::cmdAllergicHistory_Click() {
    showHistory(grid.Dosage, true);
}

void frmExtendedInfo::FlexGrid_MouseDown() {
    if (FlexGrid->MouseRow() == 0 || FlexGrid->MouseCol() != grid.HistoryIcon) {
        return;
    }
    FlexGrid->setCol(grid.HistoryIcon);
    if (FlexGrid->CellPicture() == extended_info::images.allergyHistory) {
        showHistory(grid.RegNr, false);
    }
}

void frmExtendedInfo::showHistory(int regNrCol, bool modal) {
    FlexGrid->setCol(regNrCol);
    const std::string regNr = FlexGrid->Text().toStdString();
    FlexGrid->setCol(grid.Product);
    const std::string name = FlexGrid->Text().toStdString();
    SelectFlexGridRow(FlexGrid, FlexGrid->Row());
    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    history.listHistory(Pnr, regNr, name);
    if (modal) {
        history.exec();
    } else {
        history.show();
    }
}

void frmExtendedInfo::Text1_Change() {
    if (Tag(Text1) != NoChange) {
        Text1Changed = true;
    }
}

void frmExtendedInfo::Text2_Change() {
    if (Tag(Text2) != NoChange) {
        Text2Changed = true;
    }
}

void frmExtendedInfo::Text1_LostFocus() {
    try {
        if (Text1Changed) {
            SaveGeneralInfo();
        }
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

void frmExtendedInfo::Text2_LostFocus() {
    try {
        if (Text2Changed) {
            SaveProductNote();
        }
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

void frmExtendedInfo::leaveTextBox() {
    if (focusWidget() == Text1) {
        Text1_LostFocus();
    } else if (focusWidget() == Text2) {
        Text2_LostFocus();
    }
}

// A click has taken the focus from a text box first, and leaving the box has saved; a key that
// presses the button leaves it here. A failure before the unloading leaves the screen open.
void frmExtendedInfo::cmdClose_Click() {
    leaveTextBox();
    try {
        frmShowPatient &view = Screen<frmShowPatient>();
        view.ReadPatientFolder(Pnr);
        Unload<frmExtendedInfo>();
        Screen<mainApp>().showChild(&view);
        SelectFlexGridRow(view.FlexGrid, 1);
        view.FlexGrid_SelChange();
    } catch (const MireloError &error) {
        ReportNoteFailure(error);
    }
}

} // namespace mirelo::screens

// Saves pictures of the login screen, the main frame, the medication view (also scrolled, and
// refilled), the detail panel of a product, the dialogs of notes and warnings, the preview of the
// printed medication list, the extended information, the patient details, About, the settings and
// the folder picker, for a review of the look. Works in a temporary application directory with a
// made-up patient.
#include "platform/translations/swedish_qt_texts.h"
#include "records/note_records.h"
#include "records/printed_medication_list.h"
#include "screen_test.h"
#include "screens/frmMedicationListPreview.h"

#include <QDir>
#include <QFileDialog>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTemporaryDir>
#include <iostream>

using namespace mirelo;
using namespace mirelo::testing;

int main(int argc, char **argv) {
    const QString target = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    QDir().mkpath(target);
    bool saved = true;
    const auto save = [&](QWidget &window, const char *name) {
        QApplication::processEvents();
        const QString path = target + "/" + name + ".png";
        const bool done = window.grab().save(path);
        std::cout << (done ? "saved " : "could not save ") << path.toStdString() << "\n";
        saved = saved && done;
    };
    ensureGuiApplication();
    platform::installSwedishQtTexts(*qApp);
    QTemporaryDir appDir;
    setApplicationDirectoryForTesting(appDir.path().toStdString());
    QDir(appDir.path()).mkpath(QStringLiteral("data"));
    session().gDataPath = appDir.path().toStdString() + "/data/";
    writeSettingsFile({.dataPath = session().gDataPath});
    save(Screen<frmSplash>(), "login");

    session().gSignature = "Dr. Karin Lindqvist, Vårdcentralen Åby";
    // Thirty products, so the list scrolls under its fixed row, one of a maker with an "&", and
    // a signature long enough to reach the next caption of the detail panel.
    ProductFields waran{.id = "S2_1", .regNr = "19650101", .productName = "Waran", .allergic = "1"};
    waran.companyName = "Karo Pharma";
    waran.strength = "2,5 mg";
    waran.atcCode = "B01AA03";
    waran.prescribedTimestamp = "2026-11-23T14:30:00";
    waran.insertedBy = "Dr. Karl-Fredrik Lindqvist-Öberg, Vårdcentralen Östra Hamngatan";
    ProductFields noted{.id = "S1_0", .regNr = "100002", .checked = "0", .allergicHistory = "1"};
    noted.note = "Magbesvär vid högre dos.";
    noted.noteBy = "Dr. Karin Lindqvist";
    noted.noteTimestamp = "2026-02-03 10:15:00";
    std::vector<ProductFields> products{waran, noted};
    for (int number = 1; number < 30; ++number) {
        const bool ipren = number == 2;
        products.push_back({.id = "S1_" + std::to_string(number),
                            .productName = ipren ? "Ipren" : "Alvedon",
                            .companyName = ipren ? "Johnson &amp; Johnson" : "Orion",
                            .atcCode = "N02BE0" + std::to_string(number % 10),
                            .checked = number < 4 ? "1" : "0",
                            .note = number == 3 ? "Tas med mat" : "",
                            .allergicHistory = ipren ? "1" : "0"});
    }
    storePatient("191212121212", products, "Åström", "Märta");

    mainApp &frame = Screen<mainApp>();
    frame.show();
    save(frame, "main_frame");

    frmShowPatient &view = Screen<frmShowPatient>();
    view.ReadPatientFolder("191212121212");
    frame.hideChild(&Screen<frmMain>());
    frame.placeChild(&view, 0, 0);
    view.FlexGrid->setRow(1);
    view.FlexGrid_SelChange();
    frame.showChild(&view);
    save(frame, "medication_view");
    view.FlexGrid->verticalScrollBar()->setValue(view.FlexGrid->verticalScrollBar()->maximum());
    view.FlexGrid->horizontalScrollBar()->setValue(view.FlexGrid->horizontalScrollBar()->maximum());
    save(frame, "medication_view_scrolled");
    // The refill after a prescription keeps the list where it was, its top row in sight.
    view.FlexGrid->verticalScrollBar()->setValue(0);
    view.FlexGrid->horizontalScrollBar()->setValue(0);
    view.ReadPatientFolder("191212121212");
    save(frame, "medication_view_refilled");
    view.FlexGrid->setRow(3);
    view.FlexGrid_SelChange();
    save(frame, "detail_panel");

    SaveAllergicHistory("191212121212", "S2_1", 1,
                        "Utslag och klåda efter första dosen, bekräftat vid återbesök på "
                        "vårdcentralen.",
                        session().gSignature, NoteScreen::MedicalNote);
    SaveAllergicHistory("191212121212", "S2_1", 0,
                        "Felaktigt registrerad.\r\nGäller Warfarin Orion.", session().gSignature,
                        NoteScreen::MedicalNote);
    SaveMedicalNote("191212121212", "S2_1",
                    "Utsatt inför operation.\r\nÅterinsätts efter kontroll av PK-värde.", 1,
                    session().gSignature);
    frmMedicalNote &note = Screen<frmMedicalNote>();
    note.ReadPatientFile("S2_1", "191212121212");
    save(note, "medical_note");

    frmAllergicExtendedInfo &reason = Screen<frmAllergicExtendedInfo>();
    reason.txtExtendedMedicalInfo->setPlainText(QStringLiteral("Reaktionen var en biverkan."));
    save(reason, "allergy_reason");

    frmAllergicHistory &history = Screen<frmAllergicHistory>();
    history.listHistory("191212121212", "19650101", "Waran Tablett 2,5 mg");
    save(history, "allergy_history");

    // The list the patient takes home, with the reasons of the warnings just written.
    frmMedicationListPreview preview(
        ReadPrintedMedicationList("191212121212", true, session().gSignature), "191212121212");
    preview.show();
    save(preview, "medication_list_preview");
    preview.hide();

    frmExtendedInfo &extendedInfo = Screen<frmExtendedInfo>();
    extendedInfo.ReadPatientFolder("191212121212");
    frame.hideChild(&view);
    // The product of a row is shown once the pointer has been over the grid.
    QWidget *cells = extendedInfo.FlexGrid->viewport();
    const QPoint onSecondRow =
        extendedInfo.FlexGrid->visualItemRect(extendedInfo.FlexGrid->item(2, 3)).center();
    QMouseEvent move(QEvent::MouseMove, onSecondRow, cells->mapToGlobal(onSecondRow), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(cells, &move);
    extendedInfo.FlexGrid->setRow(2);
    extendedInfo.FlexGrid_SelChange();
    frame.showChild(&extendedInfo);
    frame.placeChild(&extendedInfo, 0, 0);
    save(frame, "extended_info");

    frmPatInfo &details = Screen<frmPatInfo>();
    details.ReadPatientFile("191212121212");
    save(details, "patient_details");
    save(Screen<frmAbout>(), "about");
    save(Screen<frmSettings>(), "settings");
    // The folder picker as the settings' Bläddra shows it.
    QFileDialog picker(&Screen<frmSettings>(), QStringLiteral("Välj en katalog"), appDir.path());
    picker.setFileMode(QFileDialog::Directory);
    picker.setOption(QFileDialog::ShowDirsOnly);
    picker.show();
    save(picker, "folder_picker");
    return saved ? 0 : 1;
}

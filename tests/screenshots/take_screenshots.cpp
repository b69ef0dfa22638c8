// Saves pictures of the login screen, the main frame and the medication view (also scrolled), for a
// review of the look. Works in a temporary application directory with a made-up patient.
#include "core/application_context.h"
#include "gui_application.h"
#include "patient_file_builder.h"
#include "platform/gui/flex_grid.h"
#include "screens/frmMain.h"
#include "screens/frmShowPatient.h"
#include "screens/frmSplash.h"
#include "screens/mainApp.h"
#include "screens/screen_instance.h"
#include "settings_file_builder.h"

#include <QApplication>
#include <QDir>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QWidget>
#include <iostream>

using namespace mirelo;
using namespace mirelo::screens;
namespace support = mirelo::testing;

namespace {

bool save(QWidget &window, const QString &path) {
    QApplication::processEvents();
    const bool saved = window.grab().save(path);
    std::cout << (saved ? "saved " : "could not save ") << path.toStdString() << "\n";
    return saved;
}

} // namespace

int main(int argc, char **argv) {
    const QString target = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    QDir().mkpath(target);
    support::ensureGuiApplication();
    QTemporaryDir appDir;
    setApplicationDirectoryForTesting(appDir.path().toStdString());
    QDir(appDir.path()).mkpath(QStringLiteral("data"));
    support::SettingsFields settings;
    settings.dataPath = appDir.path().toStdString() + "/data/";
    support::writeSettingsFile(settings);

    bool saved = save(Screen<frmSplash>(), target + QStringLiteral("/login.png"));

    session().gDataPath = settings.dataPath.value();
    session().gSignature = "Dr. Karin Lindqvist, Vårdcentralen Åby";
    // Twenty products, so the list scrolls under its fixed row, and a signature long enough
    // to reach the next caption of the detail panel.
    support::ProductFields waran;
    waran.id = "S2_1";
    waran.productName = "Waran";
    waran.companyName = "Karo Pharma";
    waran.strength = "2,5 mg";
    waran.atcCode = "B01AA03";
    waran.allergic = "1";
    waran.insertedBy = "Dr. Karl-Fredrik Lindqvist-Öberg, Vårdcentralen Östra Hamngatan";
    waran.prescribedTimestamp = "2026-11-23T14:30:00";
    std::vector<support::ProductFields> products{waran};
    for (int number = 1; number < 20; ++number) {
        support::ProductFields past;
        past.id = "S1_" + std::to_string(number);
        past.checked = number < 4 ? "1" : "0";
        past.atcCode = "N02BE0" + std::to_string(number % 10);
        past.allergicHistory = number == 2 ? "1" : "0";
        past.note = number == 3 ? "Tas med mat" : "";
        products.push_back(past);
    }
    support::storePatientFile("191212121212.xml",
                              support::patientText("191212121212", "Åström", "Märta", products));

    mainApp &frame = Screen<mainApp>();
    frame.show();
    saved = save(frame, target + QStringLiteral("/main_frame.png")) && saved;

    frmShowPatient &view = Screen<frmShowPatient>();
    view.ReadPatientFolder("191212121212");
    frame.hideChild(&Screen<frmMain>());
    frame.placeChild(&view, 0, 0);
    view.FlexGrid->setRow(1);
    view.FlexGrid_SelChange();
    frame.showChild(&view);
    saved = save(frame, target + QStringLiteral("/medication_view.png")) && saved;
    view.FlexGrid->verticalScrollBar()->setValue(view.FlexGrid->verticalScrollBar()->maximum());
    view.FlexGrid->horizontalScrollBar()->setValue(view.FlexGrid->horizontalScrollBar()->maximum());
    saved = save(frame, target + QStringLiteral("/medication_view_scrolled.png")) && saved;
    return saved ? 0 : 1;
}

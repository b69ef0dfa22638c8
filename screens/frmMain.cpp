#include "screens/frmMain.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/personal_number.h"
#include "exchange/browser_handoff.h"
#include "platform/gui/flex_grid.h"
#include "platform/message_box.h"
#include "records/medication_view_interaction.h"
#include "records/patient_directory.h"
#include "screens/frmShowPatient.h"
#include "screens/mainApp.h"
#include "screens/product_grid_view.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace mirelo::screens {
namespace {

const char *const SearchTip = "Ange ett personnummer eller början av ett";

// The exact mode of the search runs every step whatever the step before it did: failures are
// passed over without a word.
template <typename Step> void ignoringFailures(Step step) {
    try {
        step();
    } catch (const std::exception &) {
    }
}

} // namespace

frmMain::frmMain() {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Tavmor Mirelo"));
    sizeTwips(this, 11955, 8205);
    setFont(verdana(8.25));
    setAutoFillBackground(true);
    setPalette(QPalette(Qt::white));

    Image1 = makeControl<QLabel>(this, "Image1");
    Image1->setPixmap(QPixmap(QStringLiteral(":/pictures/search_background.svg")));
    Image1->setGeometry(0, 0, px(11955), px(8205));
    Image1->setScaledContents(true);

    Frame1 = makeControl<QGroupBox>(this, "Frame1", QStringLiteral("Sök patient"));
    placeTwips(Frame1, 6840, 585, 4455, 6090);
    Frame1->setAutoFillBackground(true);
    Frame1->setPalette(QPalette(Qt::white));

    Label4 = makeLabel(Frame1, "Label4", QStringLiteral("Personnummer:"), 120, 480, 1815, 255);
    Label4->setToolTip(QString::fromUtf8(SearchTip));
    txtSearch = makeControl<QLineEdit>(Frame1, "txtSearch");
    placeTwips(txtSearch, 120, 720, 1935, 285);
    txtSearch->setMaxLength(13);
    txtSearch->setToolTip(QString::fromUtf8(SearchTip));
    txtSearch->setFont(QFont());
    cmdSearchPat = makeButton(Frame1, "cmdSearchPat", QStringLiteral("Sök"), 2160, 720, 735, 285);
    cmdSearchPat->setToolTip(QStringLiteral("Sök efter patient med angivet personnummer"));
    Label5 = makeLabel(Frame1, "Label5", QStringLiteral("Följande patienter hittades:"), 120, 1320,
                       2415, 255);
    List1 = makeControl<QListWidget>(Frame1, "List1");
    placeTwips(List1, 120, 1500, 2775, 3930);
    List1->setSelectionMode(QAbstractItemView::SingleSelection);
    List1->setFont(QFont());
    cmdSelPat =
        makeButton(Frame1, "cmdSelPat", QStringLiteral("Välj patient"), 3000, 5520, 1335, 300);
    cmdSelPat->setToolTip(QStringLiteral("Välj den markerade patienten"));

    Label18 = makeLabel(this, "Label18", QStringLiteral("Inloggad som: "), 7560, 7770, 1305, 195);
    txtLoggedIn = makeLabel(this, "txtLoggedIn", QString(), 8880, 7770, 2895, 255);

    setTabOrder(txtSearch, cmdSearchPat);
    setTabOrder(cmdSearchPat, List1);
    setTabOrder(List1, cmdSelPat);
    txtSearch->setFocus();

    connect(cmdSearchPat, &QPushButton::clicked, this, &frmMain::cmdSearchPat_Click);
    connect(cmdSelPat, &QPushButton::clicked, this, &frmMain::cmdSelPat_Click);
    connect(List1, &QListWidget::itemDoubleClicked, this, &frmMain::cmdSelPat_Click);
    txtSearch->installEventFilter(this);
    List1->installEventFilter(this);

    Form_Load();
}

void frmMain::Form_Load() {
    showLoggedIn(Label18, txtLoggedIn, session().gSignature);
}

bool frmMain::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (watched == txtSearch) {
                cmdSearchPat_Click();
                return true;
            }
            if (watched == List1) {
                cmdSelPat_Click();
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmMain::cmdSearchPat_Click() {
    try {
        const std::string key = SearchKeyFromText(txtSearch->text().toStdString());
        List1->clear();
        if (key.empty()) {
            platform::MsgBox("Ange personnummer vid sökning");
            return;
        }
        SearchPatient(key);
        if (List1->count() > 0) {
            List1->setCurrentRow(0);
            List1->setFocus();
            return;
        }
        // Exact mode that found the file has opened the view; anything else found nothing,
        // and a personal number goes straight to the service as a new patient.
        if (Screen<frmShowPatient>().isVisible()) {
            return;
        }
        if (!IsPersonalNumber(key)) {
            platform::MsgBox("Ingen patient hittades för \"" + key +
                                 "\". En ny patient kan läggas upp med ett personnummer på 10 "
                                 "eller 12 siffror.",
                             platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Exclamation,
                             "Mirelo");
            return;
        }
        SubmitPatientPnr(key);
    } catch (const MireloError &error) {
        platform::MsgBox("Fel uppstod: [" + std::to_string(error.number()) + "] " +
                             error.description(),
                         platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
    }
}

void frmMain::SearchPatient(const std::string &key) {
    std::vector<std::string> lines;
    // The lines found before a failure stay in the list, as the list was filled line by line.
    const auto showLines = [&] {
        for (const std::string &line : lines) {
            List1->addItem(QString::fromStdString(line));
        }
    };
    PatientSearchOutcome outcome;
    try {
        outcome = mirelo::SearchPatient(key, lines);
    } catch (...) {
        showLines();
        throw;
    }
    showLines();
    if (!outcome.openInMedicationView) {
        return;
    }
    const std::string pnr = *outcome.openInMedicationView;
    frmShowPatient &view = Screen<frmShowPatient>();
    mainApp &frame = Screen<mainApp>();
    const frmShowPatient::OneReading reading(view);
    ignoringFailures([&] { view.ReadPatientFolder(pnr); });
    ignoringFailures([&] { frame.placeChild(&view, 0, 0); });
    ignoringFailures([&] { frame.showChild(&view); });
    ignoringFailures([&] { SelectFlexGridRow(view.FlexGrid, 1); });
    ignoringFailures([&] { view.FlexGrid_SelChange(); });
}

void frmMain::cmdSelPat_Click() {
    if (List1->count() == 0) {
        platform::MsgBox("Det finns inga patienter i listan!\r\nAnvänd \"Sök\"-funktionen eller "
                         "\"Lista alla\".",
                         platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Exclamation, "Mirelo");
        return;
    }
    try {
        openSelectedLine();
    } catch (const MireloError &error) {
        platform::MsgBox(OpeningFailureBox(error));
        if (error.number() == errors::PatientFileMissing) {
            cmdSearchPat_Click();
        }
    }
}

void frmMain::openSelectedLine() {
    const QListWidgetItem *selected = List1->currentItem();
    const std::string pnr = PnrOfListLine(selected ? selected->text().toStdString() : "");
    frmShowPatient &view = Screen<frmShowPatient>();
    const frmShowPatient::OneReading reading(view);
    // The view is filled while still hidden, so a failure leaves the screen as it was.
    view.ReadPatientFolder(pnr);
    mainApp &frame = Screen<mainApp>();
    frame.hideChild(this);
    frame.placeChild(&view, 0, 0);
    view.FlexGrid->setRow(1);
    view.FlexGrid_SelChange();
    frame.showChild(&view);
}

} // namespace mirelo::screens

#include "screens/mainApp.h"

#include "platform/browser.h"
#include "platform/message_box.h"
#include "platform/process_end.h"
#include "screens/frmAbout.h"
#include "screens/frmExtendedInfo.h"
#include "screens/frmMain.h"
#include "screens/frmSettings.h"
#include "screens/frmShowPatient.h"
#include "screens/frmSplash.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScreen>
#include <QTimer>

namespace mirelo::screens {

mainApp::mainApp() {
    setObjectName(QStringLiteral("mainApp"));
    setWindowTitle(QStringLiteral("Mirelo"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    mdiArea = makeControl<QMdiArea>(this, "mdiArea");
    mdiArea->setBackground(Qt::white);
    mdiArea->setFrameShape(QFrame::NoFrame);
    setCentralWidget(mdiArea);

    Timer1 = makeControl<QTimer>(this, "Timer1");
    connect(Timer1, &QTimer::timeout, this, &mainApp::Timer1_Timer);

    buildMenu();
    qApp->installEventFilter(this);
    MDIForm_Load();
}

void mainApp::buildMenu() {
    File = menuBar()->addMenu(QStringLiteral("&Arkiv"));
    File->setObjectName(QStringLiteral("File"));
    Settings = File->addAction(QStringLiteral("&Inställningar"));
    Settings->setObjectName(QStringLiteral("Settings"));
    Settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_I));
    connect(Settings, &QAction::triggered, this, &mainApp::Settings_Click);
    PrintList = File->addAction(QStringLiteral("Skriv ut läkemedelslista…"));
    PrintList->setObjectName(QStringLiteral("PrintList"));
    PrintList->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    PrintList->setEnabled(false);
    connect(PrintList, &QAction::triggered, this, &mainApp::PrintList_Click);
    space = File->addSeparator();
    space->setObjectName(QStringLiteral("space"));
    Exit = File->addAction(QStringLiteral("&Avsluta"));
    Exit->setObjectName(QStringLiteral("Exit"));
    Exit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_A));
    connect(Exit, &QAction::triggered, this, &mainApp::Exit_Click);

    Help = menuBar()->addMenu(QStringLiteral("&Hjälp"));
    Help->setObjectName(QStringLiteral("Help"));
    About = Help->addAction(QStringLiteral("&Om Mirelo"));
    About->setObjectName(QStringLiteral("About"));
    About->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(About, &QAction::triggered, this, &mainApp::About_Click);
}

void mainApp::MDIForm_Load() {
    // The frame can be moved and minimised, never maximised or resized.
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint |
                   Qt::CustomizeWindowHint);
    clientArea_ = QSize(px(11880), px(8460));
    fitClientArea();
    if (const QScreen *display = screen()) {
        move(display->availableGeometry().center() - rect().center());
    }

    Timer1->setInterval(1000);
    Timer1->start();
    showChild(&Screen<frmMain>());
    Unload<frmSplash>();
}

void mainApp::fitClientArea() {
    setFixedSize(clientArea_.width(), clientArea_.height() + menuBar()->sizeHint().height());
}

// The child screens fill the frame as panels without a border or title bar of their own. They
// are designed a few pixels wider than the frame's client area, which widens to hold them whole.
void mainApp::showChild(QWidget *child) {
    QMdiSubWindow *frame = qobject_cast<QMdiSubWindow *>(child->parentWidget());
    if (frame == nullptr) {
        // The screen keeps the place it was given before it was first shown.
        const QPoint place = child->pos();
        frame = mdiArea->addSubWindow(child, Qt::SubWindow | Qt::FramelessWindowHint);
        frame->move(place);
        frame->setAttribute(Qt::WA_DeleteOnClose, false);
        // An unloaded screen takes its frame with it.
        connect(child, &QObject::destroyed, frame, &QObject::deleteLater);
    }
    if (clientArea_.expandedTo(child->size()) != clientArea_) {
        clientArea_ = clientArea_.expandedTo(child->size());
        fitClientArea();
    }
    frame->show();
    child->show();
    frame->raise();
}

void mainApp::hideChild(QWidget *child) {
    if (auto *frame = qobject_cast<QMdiSubWindow *>(child->parentWidget())) {
        frame->hide();
    } else {
        child->hide();
    }
}

void mainApp::placeChild(QWidget *child, int leftTwips, int topTwips) {
    QWidget *frame = qobject_cast<QMdiSubWindow *>(child->parentWidget());
    (frame ? frame : child)->move(px(leftTwips), px(topTwips));
}

bool mainApp::medicationViewOnShow() {
    return IsLoaded<frmShowPatient>() && Screen<frmShowPatient>().isVisible();
}

// Ctrl+A is Avsluta on every screen of the frame, also in a text box, which would otherwise
// take it for selecting all its text. The printing of the medication list follows the view on
// and off the screen, however it came or went.
bool mainApp::eventFilter(QObject *watched, QEvent *event) {
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) &&
        qobject_cast<frmShowPatient *>(watched) != nullptr) {
        PrintList->setEnabled(medicationViewOnShow());
    }
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent *>(event)->keyCombination() == QKeyCombination(Qt::CTRL, Qt::Key_A)) {
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (widget != nullptr && widget->window() == this) {
            event->ignore();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

// Nej is the default: Ctrl+A is select all to most, and the Enter that follows must not end
// the program.
bool mainApp::MDIForm_QueryUnload() {
    return platform::MsgBox("Vill du verkligen avsluta Mirelo?", platform::MsgBoxButtons::YesNo,
                            platform::MsgBoxIcon::Warning, "Mirelo",
                            platform::MsgBoxDefault::Second) == platform::MsgBoxResult::No;
}

// A note typed and not yet left is saved, as leaving its box saves it, before the process ends.
void mainApp::MDIForm_Unload() {
    if (IsLoaded<frmExtendedInfo>()) {
        Screen<frmExtendedInfo>().leaveTextBox();
    }
    platform::EndProcess();
}

void mainApp::closeEvent(QCloseEvent *event) {
    if (MDIForm_QueryUnload()) {
        event->ignore();
        return;
    }
    event->accept();
    MDIForm_Unload();
}

void mainApp::Exit_Click() {
    close();
    // Nothing is left to unload after a No, and after a Yes the process has ended; the step
    // stays, as it always was.
    Unload<frmSplash>();
}

// The inbox timer goes on ticking behind both dialogs; a scan uses the data folder of its moment.
void mainApp::Settings_Click() {
    frmSettings &settings = Screen<frmSettings>();
    centreOnOwner(&settings, this);
    settings.exec();
}

void mainApp::PrintList_Click() {
    if (medicationViewOnShow()) {
        Screen<frmShowPatient>().PrintMedicationList();
    }
}

void mainApp::About_Click() {
    frmAbout &about = Screen<frmAbout>();
    centreOnOwner(&about, this);
    about.exec();
}

void mainApp::Timer1_Timer() {
    if (platform::BrowserIsWaiting()) {
        return;
    }
    inbox_.Timer1_Timer(medicationViewOnShow, [] {
        frmShowPatient &view = Screen<frmShowPatient>();
        view.ReadPatientFolder(view.txtPnr->text().toStdString());
    });
}

} // namespace mirelo::screens

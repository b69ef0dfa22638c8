#include "screens/frmSplash.h"

#include "exchange/login_exchange.h"
#include "platform/message_box.h"
#include "platform/process_end.h"
#include "records/settings_store.h"
#include "screens/dialog_window.h"
#include "screens/mainApp.h"
#include "screens/screen_instance.h"
#include "screens/screen_layout.h"
#include "screens/support_contact.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

namespace mirelo::screens {

frmSplash::frmSplash() {
    setUpDialogWindow(this, CloseBox::None);
    setObjectName(QStringLiteral("frmSplash"));
    setWindowTitle(QStringLiteral("Mirelo Inloggning"));
    sizeTwips(this, 6525, 4860);
    setAutoFillBackground(true);
    setPalette(QPalette(Qt::white));

    Image1 = makeControl<QLabel>(this, "Image1");
    Image1->setPixmap(QPixmap(QStringLiteral(":/pictures/splash.svg")));
    Image1->setScaledContents(true);

    Label3 = makeLabel(this, "Label3", QStringLiteral("Spara användarnamn"), 1600, 2310, 2055, 255);
    Label2 = makeLabel(this, "Label2", QStringLiteral("Lösenord:"), 3480, 1560, 1455, 255);
    txtUsername = makeControl<QLineEdit>(this, "txtUsername");
    placeTwips(txtUsername, 1320, 1800, 1935, 285);
    txtPassword = makeControl<QLineEdit>(this, "txtPassword");
    placeTwips(txtPassword, 3480, 1800, 1695, 285);
    txtPassword->setEchoMode(QLineEdit::Password);
    Submit = makeButton(this, "Submit", QStringLiteral("Logga in"), 4200, 2280, 975, 285);
    chkSaveUsername = makeControl<QCheckBox>(this, "chkSaveUsername");
    placeTwips(chkSaveUsername, 1320, 2280, 180, 200);
    Label4 = makeLabel(this, "Label4", QStringLiteral("Kontakt"), 1320, 2925, 735, 255);
    lblSupportInfo = makeLabel(this, "lblSupportInfo", QString(), 1320, 3120, 3852, 492);
    Command1 = makeButton(this, "Command1", QStringLiteral("Avsluta"), 3480, 4320, 1035, 285);
    Label1 = makeLabel(this, "Label1", QStringLiteral("Användarnamn:"), 1320, 1560, 1692, 252);
    for (QLabel *label : {Label3, Label2, Label4, lblSupportInfo, Label1}) {
        label->setFont(verdana(6.75));
    }
    for (QPushButton *button : {Submit, Command1}) {
        button->setFont(verdana(8.25));
        button->setStyleSheet(QStringLiteral("background-color: #E0E0E0;"));
    }

    // The password box shows a star for every character typed.
    txtPassword->setStyleSheet(QStringLiteral("lineedit-password-character: 42;"));

    connect(Submit, &QPushButton::clicked, this, &frmSplash::Submit_Click);
    connect(Command1, &QPushButton::clicked, this, &frmSplash::Command1_Click);
    // Key preview: Enter anywhere on the screen logs in.
    for (QWidget *control : findChildren<QWidget *>()) {
        control->installEventFilter(this);
    }

    Form_Load();
}

void frmSplash::Form_Load() {
    LoginScreenState state;
    try {
        CheckSettingsFile(state);
    } catch (const MireloError &error) {
        platform::MsgBox(StartupFailureText(error), platform::MsgBoxButtons::OK,
                         platform::MsgBoxIcon::Stop, "Mirelo");
        platform::EndProcess();
    }
    txtUsername->setText(QString::fromStdString(state.txtUsername));
    chkSaveUsername->setChecked(state.chkSaveUsername);
    applyTabIndices(state.txtPasswordTabIndex, state.txtUsernameTabIndex);

    lblSupportInfo->setText(QStringLiteral("Telefon: %1 | Fax: %2\r\nE-post: %3")
                                .arg(QString::fromUtf8(support::Telephone),
                                     QString::fromUtf8(support::Fax),
                                     QString::fromUtf8(support::Mail)));

    // The picture is stretched over the whole screen.
    Image1->setGeometry(rect());
    Image1->lower();
    const QScreen *display = screen();
    if (display) {
        move(display->availableGeometry().center() - rect().center());
    }
}

void frmSplash::applyTabIndices(int passwordIndex, int usernameIndex) {
    applyTabOrder({{0, Label3},
                   {1, Label2},
                   {usernameIndex, txtUsername},
                   {passwordIndex, txtPassword},
                   {4, Submit},
                   {5, chkSaveUsername},
                   {6, Label4},
                   {7, lblSupportInfo},
                   {8, Command1},
                   {9, Label1}});
    // Labels take no focus: the first box in the order does.
    (passwordIndex < usernameIndex ? txtPassword : txtUsername)->setFocus(Qt::OtherFocusReason);
}

// Nothing of this screen is touched after the call: the frame may have taken its place.
void frmSplash::Login() {
    mirelo::Login({txtUsername->text().toStdString(), txtPassword->text().toStdString(),
                   chkSaveUsername->isChecked()},
                  [] {
                      Unload<frmSplash>();
                      Screen<mainApp>().show();
                  });
}

void frmSplash::Command1_Click() {
    platform::EndProcess();
}

bool frmSplash::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            Login();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmSplash::closeEvent(QCloseEvent *event) {
    // The screen has no control box: only Avsluta and a good login take it away.
    event->ignore();
}

} // namespace mirelo::screens

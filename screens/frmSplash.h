#pragma once

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace mirelo::screens {

// The login screen, the first thing the user sees. It asks for user name and password, can
// remember the user name, shows the support contact and hands over to the login.
class frmSplash : public QDialog {
    Q_OBJECT

  public:
    frmSplash();

    QLabel *Image1;
    QLabel *Label3;
    QLabel *Label2;
    QLineEdit *txtUsername;
    QLineEdit *txtPassword;
    QPushButton *Submit;
    QCheckBox *chkSaveUsername;
    QLabel *Label4;
    QLabel *lblSupportInfo;
    QPushButton *Command1;
    QLabel *Label1;

    void Form_Load();
    void Login();
    void Submit_Click() { Login(); }
    [[noreturn]] void Command1_Click();

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void reject() override {}
    void closeEvent(QCloseEvent *event) override;

  private:
    void applyTabIndices(int passwordIndex, int usernameIndex);
};

} // namespace mirelo::screens

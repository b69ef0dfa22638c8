#pragma once

#include <QWidget>

class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace mirelo::screens {

// The patient search: one search box, one list of hits and two buttons. A visit starts here.
class frmMain : public QWidget {
    Q_OBJECT

  public:
    frmMain();

    QLabel *Image1;
    QGroupBox *Frame1;
    QLabel *Label4;
    QLineEdit *txtSearch;
    QPushButton *cmdSearchPat;
    QLabel *Label5;
    QListWidget *List1;
    QPushButton *cmdSelPat;
    QLabel *Label18;
    QLabel *txtLoggedIn;

    void Form_Load();
    void cmdSearchPat_Click();
    void cmdSelPat_Click();
    void SearchPatient(const std::string &key);

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void openSelectedLine();
};

} // namespace mirelo::screens

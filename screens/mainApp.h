#pragma once

#include "intake/inbox_scan.h"

#include <QMainWindow>

class QAction;
class QMdiArea;
class QMenu;
class QTimer;

namespace mirelo::screens {

// The frame of the running system: the menu, the child screens, and the timer that takes in
// the prescriptions the service leaves in the inbox. Closing it ends the process.
class mainApp : public QMainWindow {
    Q_OBJECT

  public:
    mainApp();

    QMdiArea *mdiArea;
    QMenu *File;
    QAction *Settings;
    // Enabled while a patient's medication view is on show; Ctrl+P there too.
    QAction *PrintList;
    QAction *space;
    QAction *Exit;
    QMenu *Help;
    QAction *About;
    QTimer *Timer1;

    // The child screens live inside the frame: shown not modally, hidden, and placed by
    // their designed position in twips.
    void showChild(QWidget *child);
    void hideChild(QWidget *child);
    void placeChild(QWidget *child, int leftTwips, int topTwips);

    void MDIForm_Load();
    // Asks the closing question; true cancels the closing.
    bool MDIForm_QueryUnload();
    [[noreturn]] void MDIForm_Unload();
    void Exit_Click();
    void Settings_Click();
    void PrintList_Click();
    void About_Click();
    void Timer1_Timer();

    int16_t tickCount() const { return inbox_.tickCount(); }

  protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void buildMenu();
    void fitClientArea();
    static bool medicationViewOnShow();

    QSize clientArea_;
    InboxTimer inbox_;
};

} // namespace mirelo::screens

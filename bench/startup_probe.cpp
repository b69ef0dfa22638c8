// Loaded into a program through Qt's generic plugin mechanism, so that the program itself runs
// unchanged: it reports on standard error when the first window is shown and how much memory
// the process holds once that window is drawn, then logs in as the demo user when the window is
// the login screen and reports the memory once the search screen is up.

#include <QAbstractButton>
#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QLineEdit>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

long residentKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

void report(const char *what, const QString &detail) {
    std::fprintf(stderr, "probe: %s %s\n", what, detail.toUtf8().constData());
    std::fflush(stderr);
}

class StartupProbe : public QObject {
  public:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() != QEvent::Show || !watched->isWidgetType()) {
            return false;
        }
        auto *widget = static_cast<QWidget *>(watched);
        if (!firstShown_ && widget->isWindow()) {
            firstShown_ = true;
            report("shown", widget->objectName());
            // The memory is read once the event loop has drawn the window.
            QTimer::singleShot(0, this, [this, widget] { atLogin(widget); });
        } else if (widget->objectName() == QStringLiteral("frmMain") && !searchShown_) {
            searchShown_ = true;
            QTimer::singleShot(0, this,
                               [] { report("search-rss", QString::number(residentKilobytes())); });
        }
        return false;
    }

  private:
    void atLogin(QWidget *window) {
        report("login-rss", QString::number(residentKilobytes()));
        auto *user = window->findChild<QLineEdit *>(QStringLiteral("txtUsername"));
        auto *password = window->findChild<QLineEdit *>(QStringLiteral("txtPassword"));
        auto *submit = window->findChild<QAbstractButton *>(QStringLiteral("Submit"));
        if (user != nullptr && password != nullptr && submit != nullptr) {
            user->setText(QStringLiteral("demo"));
            password->setText(QStringLiteral("demo123"));
            submit->click();
        }
    }

    bool firstShown_ = false;
    bool searchShown_ = false;
};

} // namespace

class StartupProbePlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "startup_probe.json")

  public:
    QObject *create(const QString &, const QString &) override {
        auto *probe = new StartupProbe;
        QCoreApplication::instance()->installEventFilter(probe);
        return probe;
    }
};

#include "startup_probe.moc"

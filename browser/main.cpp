#include "driven_browser.h"
#include "platform/browser_protocol.h"
#include "platform/translations/swedish_qt_texts.h"

#include <QApplication>
#include <QLocale>
#include <QStringList>
#include <unistd.h>

// The browser that Mirelo starts at a hand-off. It is the user's once shown, so it leaves
// Mirelo's session at once: neither Mirelo's end nor its terminal's hang-up reaches it.
int main(int argc, char **argv) {
    setsid();
    // Qt WebEngine shares the application's OpenGL contexts; set before the application.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    // The engine's own words (a form's warnings, a date's picker) follow the default language.
    QLocale::setDefault(QLocale(QLocale::Swedish, QLocale::Sweden));
    QApplication application(argc, argv);
    mirelo::platform::installSwedishQtTexts(application);
    const QStringList arguments = QApplication::arguments();
    const qsizetype option =
        arguments.indexOf(QString::fromLatin1(mirelo::platform::browser_protocol::ChannelOption));
    if (option < 0 || option + 1 >= arguments.size()) {
        return 2;
    }
    mirelo::browser::DrivenBrowser browser(arguments.at(option + 1));
    if (!browser.connected()) {
        return 1;
    }
    return application.exec();
}

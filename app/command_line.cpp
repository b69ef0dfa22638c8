#include "app/command_line.h"

#include "build_config.h"
#include "core/application_context.h"

#include <QCommandLineParser>
#include <QGuiApplication>

namespace mirelo::app {

void ApplyCommandLine(const QCoreApplication &application) {
    QCoreApplication::setApplicationVersion(QString::fromLatin1(build::version));
    QGuiApplication::setDesktopFileName(QStringLiteral("mirelo"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Mirelo, läkemedelslistan för förskrivaren"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption appDir(
        QStringLiteral("app-dir"),
        QStringLiteral("Programkatalogen med System/Settings.xml, in/ och data/ (annars "
                       "MIRELO_APP_DIR, och för ett installerat program användarens egen)."),
        QStringLiteral("KATALOG"));
    parser.addOption(appDir);
    parser.process(application);
    ChooseApplicationDirectory(parser.value(appDir).toStdString(),
                               QCoreApplication::applicationDirPath().toStdString());
}

} // namespace mirelo::app

#include "platform/translations/swedish_qt_texts.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace mirelo::platform {

void installSwedishQtTexts(QCoreApplication &application) {
    // Translators are asked last installed first: the system's catalogues before ours.
    const QString systemFolder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    const std::pair<const char *, QString> catalogues[] = {
        {"mirelo_qt", QStringLiteral(":/translations")},
        {"qt", systemFolder},
        {"qtbase", systemFolder},
    };
    for (const auto &[catalogue, folder] : catalogues) {
        auto *translator = new QTranslator(&application);
        if (translator->load(QLocale(QLocale::Swedish, QLocale::Sweden),
                             QString::fromLatin1(catalogue), QStringLiteral("_"), folder)) {
            application.installTranslator(translator);
        } else {
            delete translator;
        }
    }
}

} // namespace mirelo::platform

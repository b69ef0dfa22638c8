#include "platform/translations/swedish_qt_texts.h"

#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <cstring>

namespace mirelo::platform {
namespace {

struct SwedishText {
    const char *context;
    const char *english;
    const char *swedish;
};

// What the installed Swedish catalogues leave in English among the texts that the program's
// dialogs show.
constexpr SwedishText MissingTexts[] = {
    {"QFileDialog", "Look in:", "Sök i:"},
    {"QFileDialog", "&Choose", "&Välj"},
    {"QFileDialog", "Show ", "Visa "},
    {"QFileDialog", "&New Folder", "&Ny mapp"},
    {"QFileDialog", "Go back", "Gå tillbaka"},
    {"QFileDialog", "Go forward", "Gå framåt"},
    {"QFileDialog", "Go to the parent directory", "Gå till föräldrakatalogen"},
    {"QFileDialog", "Create a New Folder", "Skapa en ny mapp"},
    {"QFileDialog", "Change to list view mode", "Visa som lista"},
    {"QFileDialog", "Change to detail view mode", "Visa med detaljer"},
    {"QFileDialog", "Sidebar", "Sidopanel"},
    {"QFileDialog", "Recent Places", "Senaste platser"},
    {"QFileDialog", "Are you sure you want to delete '%1'?",
     "Är du säker på att du vill ta bort \"%1\"?"},
    {"QFileDialog", "Delete", "Ta bort"},
    {"QFileDialog", "Computer", "Dator"},
    {"QFileSystemModel", "Computer", "Dator"},
    {"QFileSystemModel", "Invalid filename", "Ogiltigt filnamn"},
    {"QFileSystemModel",
     "<b>The name \"%1\" cannot be used.</b><p>Try using another name, with fewer characters or "
     "no punctuation marks.",
     "<b>Namnet \"%1\" kan inte användas.</b><p>Försök med ett annat namn, med färre tecken eller "
     "utan skiljetecken."},
    {"QPlatformTheme", "OK", "OK"},
    {"QPlatformTheme", "Cancel", "Avbryt"},
    {"QPlatformTheme", "&Yes", "&Ja"},
    {"QPlatformTheme", "&No", "&Nej"},
    {"QPlatformTheme", "Yes to &All", "Ja till &alla"},
    {"QPlatformTheme", "N&o to All", "N&ej till alla"},
    {"QPlatformTheme", "Close", "Stäng"},
    {"QPlatformTheme", "Save", "Spara"},
    {"QPlatformTheme", "Open", "Öppna"},
    {"QPlatformTheme", "Apply", "Verkställ"},
    {"QPlatformTheme", "Help", "Hjälp"},
    {"QWidgetTextControl", "&Undo", "&Ångra"},
    {"QWidgetTextControl", "&Redo", "&Gör om"},
    {"QWidgetTextControl", "Cu&t", "Klipp &ut"},
    {"QWidgetTextControl", "&Copy", "&Kopiera"},
    {"QWidgetTextControl", "&Paste", "Klistra &in"},
    {"QWidgetTextControl", "Delete", "Ta bort"},
    {"QWidgetTextControl", "Select All", "Markera alla"},
    {"QWidgetTextControl", "Copy &Link Location", "Kopiera &länkadress"},
};

class MissingSwedishTexts : public QTranslator {
  public:
    using QTranslator::QTranslator;

    QString translate(const char *context, const char *sourceText, const char *,
                      int) const override {
        for (const SwedishText &text : MissingTexts) {
            if (std::strcmp(text.context, context) == 0 &&
                std::strcmp(text.english, sourceText) == 0) {
                return QString::fromUtf8(text.swedish);
            }
        }
        return {};
    }

    bool isEmpty() const override { return false; }
};

} // namespace

void installSwedishQtTexts(QCoreApplication &application) {
    // Translators are asked last installed first: the system's catalogues before ours.
    application.installTranslator(new MissingSwedishTexts(&application));
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    for (const char *catalogue : {"qt", "qtbase"}) {
        auto *installed = new QTranslator(&application);
        if (installed->load(QLocale(QLocale::Swedish, QLocale::Sweden),
                            QString::fromLatin1(catalogue), QStringLiteral("_"), folder)) {
            application.installTranslator(installed);
        } else {
            delete installed;
        }
    }
}

} // namespace mirelo::platform

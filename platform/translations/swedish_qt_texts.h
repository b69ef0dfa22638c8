#pragma once

#include <QCoreApplication>

namespace mirelo::platform {

// Qt's own texts in Swedish, so that the standard dialogs and buttons (the folder picker, a
// text box's menu, the print preview and the print dialog) speak as the rest of the program
// does: the Swedish catalogues the system has installed, and ours for the texts they leave in
// English.
void installSwedishQtTexts(QCoreApplication &application);

} // namespace mirelo::platform

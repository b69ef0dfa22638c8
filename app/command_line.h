#pragma once

class QCoreApplication;

namespace mirelo::app {

// Takes Mirelo's own options once Qt has taken its own: --app-dir chooses the application
// directory, --help and --version answer and end the process. Also names the desktop entry
// that the windows belong to, so that the desktop shows them under the menu entry's name.
void ApplyCommandLine(const QCoreApplication &application);

} // namespace mirelo::app

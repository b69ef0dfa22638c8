#include "platform/system_information.h"

#include <QProcess>
#include <QStandardPaths>

namespace mirelo::platform {

bool GetKeyValue(uint32_t, const std::string &, const std::string &, std::string &value) {
    value.clear();
    return false;
}

bool StartProgram(const std::string &path) {
    return QProcess::startDetached(QString::fromStdString(path), {});
}

bool StartSystemInformationTool() {
    // The desktop tools that show the hardware and the system, in order of preference.
    for (const char *tool : {"hardinfo", "kinfocenter", "gnome-system-monitor"}) {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(tool));
        if (!program.isEmpty()) {
            return StartProgram(program.toStdString());
        }
    }
    return false;
}

} // namespace mirelo::platform

#include "core/application_context.h"

#include <QCoreApplication>
#include <filesystem>
#include <unistd.h>

namespace mirelo {
namespace {

std::string &directoryOverride() {
    static std::string path;
    return path;
}

std::string runningProgramDirectory() {
    if (QCoreApplication::instance() != nullptr) {
        return QCoreApplication::applicationDirPath().toStdString();
    }
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path().string() : executable.parent_path().string();
}

} // namespace

SessionValues &session() {
    static SessionValues values;
    return values;
}

std::string ApplicationDirectory() {
    return directoryOverride().empty() ? runningProgramDirectory() : directoryOverride();
}

void setApplicationDirectoryForTesting(const std::string &path) {
    directoryOverride() = path;
}

std::string SystemFolder() {
    return ApplicationDirectory() + "/System/";
}
std::string SettingsFilePath() {
    return ApplicationDirectory() + "/System/Settings.xml";
}
std::string InboxFolder() {
    return ApplicationDirectory() + "/in/";
}
std::string ErrorFolder() {
    return ApplicationDirectory() + "/Error/";
}
std::string DefaultDataFolder() {
    return ApplicationDirectory() + "/data/";
}

} // namespace mirelo

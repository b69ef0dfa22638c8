#include "core/application_context.h"

#include "build_config.h"

#include <QCoreApplication>
#include <QStandardPaths>
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

// The package puts the program into the system's own folder for it, which holds no user's
// files; a build or a clone never lies there. Where the program lies tells, not whether its
// folder can be written: the superuser, who installs it, can write the system's folders too.
bool isInstalled(const std::string &programDirectory) {
    std::error_code unreadable;
    const auto program = std::filesystem::weakly_canonical(programDirectory, unreadable);
    return !unreadable &&
           program == std::filesystem::weakly_canonical(build::installedProgramFolder, unreadable);
}

std::string withoutTrailingSeparator(const std::string &folder) {
    const std::filesystem::path path = std::filesystem::absolute(folder).lexically_normal();
    return (path.has_filename() ? path : path.parent_path()).string();
}

std::string usersOwnFolder() {
    const std::string folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation).toStdString() +
        "/mirelo";
    // A folder that can't be made is reported by the settings check, which then ends the start.
    std::error_code ignored;
    std::filesystem::create_directories(folder + "/in", ignored);
    std::filesystem::create_directories(folder + "/data", ignored);
    return folder;
}

} // namespace

SessionValues &session() {
    static SessionValues values;
    return values;
}

std::string ApplicationDirectory() {
    return directoryOverride().empty() ? runningProgramDirectory() : directoryOverride();
}

void ChooseApplicationDirectory(const std::string &appDirOption,
                                const std::string &programDirectory) {
    const std::string named =
        appDirOption.empty() ? qEnvironmentVariable("MIRELO_APP_DIR").toStdString() : appDirOption;
    if (!named.empty()) {
        directoryOverride() = withoutTrailingSeparator(named);
    } else {
        directoryOverride() = isInstalled(programDirectory) ? usersOwnFolder() : std::string();
    }
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

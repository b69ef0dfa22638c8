#pragma once

#include <string>

namespace mirelo {

// The session values: process-wide texts, empty at start, in memory only for the life of the
// process. The password in particular is never written anywhere by the program.
struct SessionValues {
    std::string gDataPath;
    std::string gUsername;
    std::string gPassword;
    std::string gSignature;
    std::string gServer;
    std::string gLoginUrl;
    std::string gInitXmlUrl;
};

SessionValues &session();

// The application directory, without a trailing separator: the one chosen at start, or else
// the directory of the running program, asked afresh each time.
std::string ApplicationDirectory();
// Chooses the application directory once at start, before the login screen reads its settings.
// A folder named by --app-dir, or else by MIRELO_APP_DIR in the environment, is taken as it is:
// that is how a practice points Mirelo at the settings of its shared data folder. Else an
// installed program keeps the user's files in the user's own folder, $XDG_DATA_HOME/mirelo,
// making it with in/ and data/ (the settings check makes System/ and the file). Run from a
// build or a clone, Mirelo finds its folders beside itself.
void ChooseApplicationDirectory(const std::string &appDirOption,
                                const std::string &programDirectory);
// Points the application directory elsewhere (tests); an empty path restores the real one.
void setApplicationDirectoryForTesting(const std::string &path);

// The folders and files under the application directory.
std::string SystemFolder();      // ".../System/"
std::string SettingsFilePath();  // ".../System/Settings.xml"
std::string InboxFolder();       // ".../in/"
std::string ErrorFolder();       // ".../Error/"
std::string DefaultDataFolder(); // ".../data/"

} // namespace mirelo

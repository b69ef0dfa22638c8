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

// The directory of the running program, without a trailing separator, asked afresh each time.
std::string ApplicationDirectory();
// Points the application directory elsewhere (tests); an empty path restores the real one.
void setApplicationDirectoryForTesting(const std::string &path);

// The folders and files under the application directory.
std::string SystemFolder();      // ".../System/"
std::string SettingsFilePath();  // ".../System/Settings.xml"
std::string InboxFolder();       // ".../in/"
std::string ErrorFolder();       // ".../Error/"
std::string DefaultDataFolder(); // ".../data/"

} // namespace mirelo

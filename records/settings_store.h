#pragma once

#include "core/mirelo_error.h"

#include <optional>
#include <string>

namespace mirelo {

// What the login screen takes from the settings file when it opens: the saved user name, the
// check box, and the tab order that puts the focus in the password box once a name is known.
// Starts as the screen is designed; the screen applies whatever comes back.
struct LoginScreenState {
    std::string txtUsername;
    bool chkSaveUsername = false;
    int txtPasswordTabIndex = 3;
    int txtUsernameTabIndex = 2;
};

// Creates System/ and a default settings file on the first start, else reads the saved user
// name into the screen's state. Every failure goes up: the login screen ends the process.
void CheckSettingsFile(LoginScreenState &screen);
void CreateSettingsFile();
void ReadSavedUsername(LoginScreenState &screen);

// The first thing of each login attempt: fills gServer, gLoginUrl and gInitXmlUrl and stores
// the check box and the user name. A file without a server gets the retired address in memory
// only; a file with one is never rewritten there.
void UpdateSettingsFile(bool chkSaveUsername, const std::string &txtUsername);

// Keeps the login's values for the run and takes the data folder from the settings file. A
// damaged file is reported here and the login goes on with the data folder it had.
void StartSession(const std::string &username, const std::string &password,
                  const std::string &signature);

// The settings dialog's OK: creates the folder if needed, stores it with a trailing separator
// and makes it the data folder at once. Gives the text the path box is to show.
std::string SaveDataPath(const std::string &txtPath);

// The settings dialog's report of a failed OK: a damaged settings file speaks for itself,
// anything else, such as a folder that can't be made, gives its number for support.
std::string SaveDataPathFailureText(const MireloError &error);

// The folder picker's choice, ready for the path box: made when it isn't there yet, and given a
// trailing separator. A failure doesn't stop the steps after it; it comes back for the dialog to
// report once, at the end.
struct ChosenFolder {
    std::string txtPath;
    std::optional<MireloError> failure;
};
ChosenFolder TakeChosenFolder(const std::string &path);

// The text the login screen shows before ending the process when CheckSettingsFile fails:
// a damaged file speaks for itself, anything else also gives its number.
std::string StartupFailureText(const MireloError &error);

} // namespace mirelo

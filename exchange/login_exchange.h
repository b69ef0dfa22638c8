#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// What the login screen holds when the user asks to log in.
struct LoginScreenInput {
    std::string txtUsername;
    std::string txtPassword;
    bool chkSaveUsername = false;
};

// What the login screen does afterwards: give way to the main frame, or stay as it is with
// the boxes as the user left them.
enum class LoginOutcome { OpenMainFrame, Stay };

// The User document: Username, Password and the program's version.
platform::XmlDocument BuildLoginXML(const std::string &username, const std::string &password);

// One login attempt against gServer + gLoginUrl, with its own failure handling: an
// unreachable server lets the user try again, any other failure is shown and ends the
// process.
LoginOutcome Login(const LoginScreenInput &screen);

// Walks the status messages of a parsed answer. A status "0" before a refusal has let the
// user in already, so the main frame opens all the same.
LoginOutcome HandleLoginResponse(const platform::XmlDocument &response);

} // namespace mirelo

#pragma once

#include "platform/xml_document.h"

#include <functional>
#include <string>

namespace mirelo {

// What the login screen holds when the user asks to log in.
struct LoginScreenInput {
    std::string txtUsername;
    std::string txtPassword;
    bool chkSaveUsername = false;
};

// Unloads the login screen and shows the main frame. The walk of the answer calls it at the
// moment a status lets the user in, so the boxes after it stand over the frame; a second call
// changes nothing. Without a call the login screen stays with its boxes as the user left them.
using OpenMainFrame = std::function<void()>;

// The User document: Username, Password and the program's version.
platform::XmlDocument BuildLoginXML(const std::string &username, const std::string &password);

// One login attempt against gServer + gLoginUrl, with its own failure handling: an
// unreachable server lets the user try again, any other failure is shown and ends the
// process.
void Login(const LoginScreenInput &screen, const OpenMainFrame &openMainFrame);

// Walks the status messages of a parsed answer. A status "0" opens the main frame on the spot
// and the walk goes on, so a refusal after it shows its box over the open frame.
void HandleLoginResponse(const platform::XmlDocument &response, const OpenMainFrame &openMainFrame);

} // namespace mirelo

#include "exchange/login_exchange.h"

#include "build_config.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "platform/document_building.h"
#include "platform/http_request.h"
#include "platform/message_box.h"
#include "platform/process_end.h"
#include "records/settings_store.h"

#include <cstdint>
#include <limits>

namespace mirelo {
namespace {

using platform::MsgBox;
using platform::MsgBoxButtons;
using platform::MsgBoxIcon;

void attemptLogin(const LoginScreenInput &screen, const OpenMainFrame &openMainFrame) {
    platform::XmlDocument document;
    platform::HttpRequest request;

    UpdateSettingsFile(screen.chkSaveUsername, screen.txtUsername);
    if (screen.txtUsername.empty() || screen.txtPassword.empty()) {
        MsgBox("Fyll i Användarnamn samt Lösenord.", MsgBoxButtons::OK, MsgBoxIcon::None);
        return;
    }

    document = BuildLoginXML(screen.txtUsername, screen.txtPassword);
    request.open("POST", session().gServer + session().gLoginUrl, false);
    request.send(document.xml());

    document.setAsync(false);
    document.setValidateOnParse(true);
    document.load(request.responseStream());
    if (document.parseError().errorCode != 0) {
        throw MireloError(
            errors::LoginResponseDamaged,
            withReason("Svaret från Korvalo kunde inte behandlas.", document.parseError().reason));
    }

    const std::string signature = document.selectSingleNode("//Signature").text();
    StartSession(screen.txtUsername, screen.txtPassword, signature);
    HandleLoginResponse(document, openMainFrame);
}

} // namespace

platform::XmlDocument BuildLoginXML(const std::string &username, const std::string &password) {
    platform::XmlDocument document;
    const platform::XmlNode root = platform::StartDocument(document, "User");
    root.appendElement("Username", username);
    root.appendElement("Password", password);
    root.appendElement("Version", build::version);
    return document;
}

void Login(const LoginScreenInput &screen, const OpenMainFrame &openMainFrame) {
    try {
        attemptLogin(screen, openMainFrame);
    } catch (const MireloError &error) {
        if (error.number() == errors::ServerUnreachable) {
            MsgBox("Kunde inte ansluta till Mirelos loginserver. Kontrollera din "
                   "internetförbindelse.",
                   MsgBoxButtons::OK, MsgBoxIcon::Stop);
            return;
        }
        MsgBox("Kontakta support och ange följande fel: " + std::to_string(error.number()) + " " +
                   error.description(),
               MsgBoxButtons::OK, MsgBoxIcon::Stop);
        platform::EndProcess();
    }
}

void HandleLoginResponse(const platform::XmlDocument &response,
                         const OpenMainFrame &openMainFrame) {
    std::string collected;
    int16_t count = 0;

    for (const platform::XmlNode &message : response.selectNodes("//Message")) {
        if (count == std::numeric_limits<int16_t>::max()) {
            runtime::raise(runtime::Overflow);
        }
        ++count;
        const std::string status = message.selectSingleNode("Status").text();
        if (status == "0") {
            openMainFrame();
        } else if (status == "1" || status == "3") {
            collected += message.selectSingleNode("Description").text() + "\r\n";
        } else if (status == "2" || status == "4" || status == "6") {
            MsgBox(message.selectSingleNode("Description").text(), MsgBoxButtons::OK,
                   MsgBoxIcon::Stop);
            return;
        }
    }

    if (count == 0) {
        return;
    }
    if (count > 1) {
        MsgBox(collected, MsgBoxButtons::OK, MsgBoxIcon::None);
    }
    openMainFrame();
}

} // namespace mirelo

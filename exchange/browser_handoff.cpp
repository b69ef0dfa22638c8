#include "exchange/browser_handoff.h"

#include "build_config.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "exchange/handover_document.h"
#include "platform/browser.h"
#include "platform/message_box.h"

#include <memory>

namespace mirelo {
namespace {

// A page without the expected form is what the browser shows when the service can't be
// reached, so a missing member means no connection.
bool isConnectionFailure(const MireloError &error) {
    return error.number() == runtime::NotSupportedByObject ||
           error.number() == errors::LoginResponseDamaged;
}

void showConnectionFailure() {
    platform::MsgBox(
        "Kunde inte ansluta till Korvalos server. Kontrollera din internetförbindelse.",
        platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
}

std::unique_ptr<platform::Browser> openHandoverPage(int pollMilliseconds) {
    std::unique_ptr<platform::Browser> browser = platform::CreateBrowser();
    browser->Navigate(session().gServer + session().gInitXmlUrl);
    while (browser->ReadyState() != platform::ReadyStateComplete) {
        browser->Sleep(pollMilliseconds);
    }
    return browser;
}

// Reading the text of a document that wasn't made is the run time's missing object.
std::string textOf(const std::optional<platform::XmlDocument> &handover) {
    if (!handover) {
        runtime::raise(runtime::ObjectNotSet);
    }
    return handover->xml();
}

} // namespace

void SubmitPrescriptionXML(const std::optional<platform::XmlDocument> &handover) {
    try {
        std::unique_ptr<platform::Browser> browser = openHandoverPage(100);
        browser->SetFirstFormField("txtXml", textOf(handover));
        browser->SubmitFirstForm();
        browser->ShowMaximized();
        browser->SetVisible();
        browser->BringToFront();
    } catch (const MireloError &error) {
        if (isConnectionFailure(error)) {
            showConnectionFailure();
        }
    }
}

void SubmitPatientPnr(const std::string &pnr) {
    try {
        std::unique_ptr<platform::Browser> browser = openHandoverPage(100);
        browser->ShowMaximized();
        const std::optional<platform::XmlDocument> handover = CreatePrescriptionXML(nullptr, pnr);
        browser->SetFirstFormField("txtXml", textOf(handover));
        browser->SubmitFirstForm();
        browser->ShowMaximized();
        browser->SetVisible();
        try {
            browser->BringToFront();
        } catch (const MireloError &) {
            // Bringing the window forward may fail without the hand-off having failed.
        }
    } catch (const MireloError &error) {
        if (isConnectionFailure(error)) {
            showConnectionFailure();
        } else {
            platform::MsgBox("Fel uppstod: [" + std::to_string(error.number()) + "] " +
                                 error.description(),
                             platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
        }
    }
}

void SubmitLoginFields(const std::string &pnr) {
    try {
        std::unique_ptr<platform::Browser> browser = openHandoverPage(500);
        browser->SetLoginFormField("txtUsername", session().gUsername);
        browser->SetLoginFormField("txtPassword", session().gPassword);
        browser->SetLoginFormField("txtPath", InboxFolder());
        browser->SetLoginFormField("txtVersion", build::version);
        browser->SetLoginFormField("txtPatientPnr", pnr);
        browser->SubmitLoginForm();
        browser->ShowMaximized();
        browser->SetVisible();
        browser->BringToFront();
    } catch (const MireloError &error) {
        if (isConnectionFailure(error)) {
            showConnectionFailure();
        }
    }
}

} // namespace mirelo

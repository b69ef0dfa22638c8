#include "browser_processes.h"
#include "core/application_context.h"
#include "exchange/browser_handoff.h"
#include "gui_application.h"
#include "platform/message_box.h"
#include "platform/process_browser.h"
#include "platform/process_end.h"
#include "platform/xml_document.h"

#include <iostream>

using namespace mirelo;

// Stands in for Mirelo: hands a personal number over to the real browser, prints the
// browser's process id and any message box, and ends as a fatal failure ends Mirelo.
// Arguments: the application directory, the server's address, the hand-over page's path, the
// password the physician logged in with.
int main(int argc, char **argv) {
    if (argc != 5) {
        return 2;
    }
    testing::ensureGuiApplication();
    platform::initialiseXml();
    setApplicationDirectoryForTesting(argv[1]);
    session().gServer = argv[2];
    session().gInitXmlUrl = argv[3];
    session().gUsername = "demo";
    session().gPassword = argv[4];
    platform::setMsgBoxPresenter([](const platform::MsgBoxRequest &request) {
        std::cout << "box " << request.text << std::endl;
        return platform::MsgBoxResult::OK;
    });
    platform::setBrowserFactory([] {
        auto channel = std::make_shared<platform::BrowserChannel>(testing::browserExecutable());
        std::cout << "browser " << channel->pid() << std::endl;
        return platform::makeProcessBrowser(channel);
    });
    SubmitPatientPnr("191212121212");
    platform::EndProcess();
}

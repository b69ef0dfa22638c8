#include "browser_processes.h"
#include "exchange/browser_handoff.h"
#include "platform/process_browser.h"
#include "platform/process_end.h"
#include "platform/xml_document.h"
#include "screen_test.h"

#include <cstdlib>
#include <iostream>

using namespace mirelo;

// Stands in for Mirelo: hands a number over to the real browser, prints its process id and any
// box, and ends as a fatal failure ends Mirelo. Arguments: application folder, server, hand-over
// page, password.
int main(int, char **argv) {
    mirelo::testing::ensureGuiApplication();
    platform::initialiseXml();
    setApplicationDirectoryForTesting(argv[1]);
    // The browser's home lies in the application directory, where a profile on disk is found.
    for (const char *variable : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
        ::setenv(variable, (std::string(argv[1]) + "/home").c_str(), 1);
    }
    session() = {
        .gUsername = "demo", .gPassword = argv[4], .gServer = argv[2], .gInitXmlUrl = argv[3]};
    platform::setMsgBoxPresenter([](const platform::MsgBoxRequest &request) {
        std::cout << "box " << request.text << std::endl;
        return platform::MsgBoxResult::OK;
    });
    platform::setBrowserFactory([] {
        auto channel =
            std::make_shared<platform::BrowserChannel>(mirelo::testing::browserExecutable());
        std::cout << "browser " << channel->pid() << std::endl;
        return platform::makeProcessBrowser(channel);
    });
    SubmitPatientPnr("191212121212");
    platform::EndProcess();
}

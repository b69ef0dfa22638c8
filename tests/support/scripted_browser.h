#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace mirelo::testing {

// What the hand-offs of a test asked of their browsers, step by step, and where the page lets
// them down. The steps read as the page's object model is driven: "Navigate <url>",
// "Sleep 100", "Forms(0).txtXml = <value>", "Forms(0).Submit", "Login.txtUsername = <value>",
// "Login.Submit", "ShowMaximized", "Visible", "AppActivate".
struct BrowserScript {
    // How many times the page answers that it is still loading.
    int incompleteReads = 0;
    // A step named here raises its number instead of being taken.
    std::map<std::string, int32_t> failingSteps;

    std::vector<std::string> steps;
    int browsersMade = 0;
    // The value last set in the first form's field of that name.
    std::string field(const std::string &name) const;
};

// Every hand-off from here to the end of the test makes a browser that follows the script.
void scriptBrowsers(BrowserScript &script);

} // namespace mirelo::testing

#pragma once

#include <optional>
#include <string>

namespace mirelo::testing {

// The elements of a settings file as a test wants them; an empty optional leaves the element
// out. Values are UTF-8 and are stored in ISO-8859-1, as the program stores them.
struct SettingsFields {
    std::optional<std::string> username = "", saveUsername = "0", dataPath{}, server{},
                               loginUrl = "/Public/Mirelo/Login.aspx",
                               initXmlUrl = "/Public/Mirelo/InitXML.aspx";
};

// Writes System/Settings.xml under the current application directory, creating System/.
void writeSettingsFile(const SettingsFields &fields);

} // namespace mirelo::testing

#include "settings_file_builder.h"

#include "core/application_context.h"
#include "core/code_page.h"
#include "test_environment.h"

#include <filesystem>

namespace mirelo::testing {
namespace {

std::string element(const char *name, const std::optional<std::string> &value) {
    if (!value) {
        return "";
    }
    return std::string("\t<") + name + ">" + *value + "</" + name + ">\r\n";
}

} // namespace

void writeSettingsFile(const SettingsFields &fields) {
    std::filesystem::create_directories(SystemFolder());
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Settings>\r\n" +
        element("Username", fields.username) + element("SaveUsername", fields.saveUsername) +
        element("DataPath", fields.dataPath) + element("Server", fields.server) +
        element("LoginUrl", fields.loginUrl) + element("InitXmlUrl", fields.initXmlUrl) +
        "</Settings>\r\n";
    writeBytes(SettingsFilePath(), Utf8ToCodePage(text));
}

} // namespace mirelo::testing

#include "records/settings_store.h"

#include "build_config.h"
#include "core/application_context.h"
#include "core/conversions.h"
#include "platform/document_building.h"
#include "platform/file_system.h"
#include "platform/message_box.h"
#include "platform/xml_document.h"

namespace mirelo {
namespace {

constexpr const char *LoginUrl = "/Public/Mirelo/Login.aspx";
constexpr const char *InitXmlUrl = "/Public/Mirelo/InitXML.aspx";

void parseSettings(platform::XmlDocument &document) {
    document.setAsync(false);
    document.setValidateOnParse(true);
    document.load(SettingsFilePath());
}

// The two readers of the start and the login attempt word a damaged file alike.
void loadOrRaise(platform::XmlDocument &document, const std::string &sentence) {
    parseSettings(document);
    if (document.parseError().errorCode != 0) {
        throw MireloError(errors::SettingsDamaged,
                          withReason(sentence, document.parseError().reason));
    }
}

constexpr const char *DamagedFile = "Inställningsfilen är skadad.";

} // namespace

void CheckSettingsFile(LoginScreenState &screen) {
    if (platform::FileExists(SettingsFilePath())) {
        ReadSavedUsername(screen);
        return;
    }
    if (!platform::FolderExists(SystemFolder())) {
        platform::CreateFolder(SystemFolder());
    }
    CreateSettingsFile();
}

void CreateSettingsFile() {
    platform::XmlDocument document;
    const platform::XmlNode root = platform::StartDocument(document, "Settings");
    root.appendElement("Username", "");
    root.appendElement("SaveUsername", std::to_string(0));
    root.appendElement("DataPath", DefaultDataFolder());
    root.appendElement("Server", build::defaultServer);
    root.appendElement("LoginUrl", LoginUrl);
    root.appendElement("InitXmlUrl", InitXmlUrl);
    document.save(SettingsFilePath());
}

void ReadSavedUsername(LoginScreenState &screen) {
    platform::XmlDocument document;
    loadOrRaise(document, DamagedFile);
    if (CInt(document.selectSingleNode("//SaveUsername").text()) == 1) {
        screen.txtUsername = document.selectSingleNode("//Username").text();
        screen.chkSaveUsername = true;
        screen.txtPasswordTabIndex = 0;
        screen.txtUsernameTabIndex = 9;
    }
}

void UpdateSettingsFile(bool chkSaveUsername, const std::string &txtUsername) {
    platform::XmlDocument document;
    loadOrRaise(document, DamagedFile);

    SessionValues &values = session();
    if (const platform::XmlNode server = document.selectSingleNode("//Server")) {
        values.gServer = server.text();
        values.gLoginUrl = document.selectSingleNode("//LoginUrl").text();
        values.gInitXmlUrl = document.selectSingleNode("//InitXmlUrl").text();
    }
    if (values.gServer.empty()) {
        // Files from before the server fields existed still reach the service they were made
        // for; the file itself is left as it is.
        values.gServer = build::retiredServer;
        values.gLoginUrl = LoginUrl;
        values.gInitXmlUrl = InitXmlUrl;
    }

    document.selectSingleNode("//SaveUsername").setText(chkSaveUsername ? "1" : "0");
    document.selectSingleNode("//Username").setText(chkSaveUsername ? txtUsername : "");
    document.save(SettingsFilePath());
}

void StartSession(const std::string &username, const std::string &password,
                  const std::string &signature) {
    platform::XmlDocument document;
    SessionValues &values = session();
    values.gUsername = username;
    values.gPassword = password;
    values.gSignature = signature;

    parseSettings(document);
    if (document.parseError().errorCode != 0) {
        platform::MsgBox(
            withReason("Validering av XML misslyckades!", document.parseError().reason),
            platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop);
        return;
    }
    values.gDataPath = document.selectSingleNode("//DataPath").text();
}

std::string SaveDataPath(const std::string &txtPath) {
    platform::XmlDocument document;
    loadOrRaise(document, "Kunde inte läsa inställningsfil.");

    if (!platform::FolderExists(txtPath)) {
        platform::CreateFolder(txtPath);
    }
    std::string path = txtPath;
    if (path.empty() || path.back() != '/') {
        path += '/';
    }
    document.selectSingleNode("//DataPath").setText(path);
    // The folder counts only once it is stored: a failed save leaves the session where the
    // file still points.
    document.save(SettingsFilePath());
    session().gDataPath = path;
    return path;
}

ChosenFolder TakeChosenFolder(const std::string &path) {
    ChosenFolder chosen;
    try {
        if (!platform::FolderExists(path)) {
            platform::CreateFolder(path);
        }
    } catch (const MireloError &error) {
        chosen.failure = error;
    }
    chosen.txtPath = !path.empty() && path.back() == '/' ? path : path + '/';
    return chosen;
}

std::string SaveDataPathFailureText(const MireloError &error) {
    if (error.number() == errors::SettingsDamaged) {
        return error.description();
    }
    return "Kontakta support och ange följande fel: " + std::to_string(error.number()) + " " +
           error.description();
}

std::string StartupFailureText(const MireloError &error) {
    if (error.number() == errors::SettingsDamaged) {
        return error.description();
    }
    return error.description() + " " + std::to_string(error.number());
}

} // namespace mirelo

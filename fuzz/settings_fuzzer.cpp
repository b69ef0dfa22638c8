// The settings file as the login screen meets it: read at the start, rewritten by a login
// attempt, read again for the session. The input is the file's bytes. Every step either
// fails with a number of ours or goes on; a rewrite that fails leaves the file byte for byte,
// and one that succeeds on a file the start could read, its two login fields plain text,
// leaves a file the next start can read with the user name kept.
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "fuzz_environment.h"
#include "platform/xml_document.h"
#include "records/settings_store.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

namespace {

// The login sets the text of the first SaveUsername and Username, which replaces all each
// holds. Where a hand-edited file keeps other fields inside them, those go with it, the other
// of the two too, as they always have; the read-back rules are for a file where both are text.
bool holdsFieldsInTheLoginFields(const std::string &path) {
    platform::XmlDocument document;
    return document.load(path) &&
           !document.selectSingleNode("//Username/* | //SaveUsername/*").isNull();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();
    std::filesystem::create_directory(SystemFolder());
    writeBytes(SettingsFilePath(), input);
    const bool loginFieldsAreText = !holdsFieldsInTheLoginFields(SettingsFilePath());

    // A start that can't read the file never comes to a login, so only a file the start read
    // must read again after the login's rewrite.
    bool readAtStart = false;
    try {
        LoginScreenState screen;
        CheckSettingsFile(screen);
        readAtStart = true;
    } catch (const MireloError &) {
    }

    bool rewritten = false;
    try {
        UpdateSettingsFile(true, "Läkare");
        rewritten = true;
    } catch (const MireloError &) {
        if (readBytes(SettingsFilePath()) != input) {
            violated("a failed rewrite of the settings file leaves it as it was");
        }
    }

    try {
        StartSession("Läkare", "hemligt", "Dr Ek");
    } catch (const MireloError &) {
    }

    if (rewritten && readAtStart && loginFieldsAreText) {
        try {
            LoginScreenState screen;
            CheckSettingsFile(screen);
            if (screen.txtUsername != "Läkare" || !screen.chkSaveUsername) {
                violated("the rewritten settings file keeps the saved user name, not " +
                         screen.txtUsername + " in " + readBytes(SettingsFilePath()));
            }
        } catch (const MireloError &error) {
            violated("the rewritten settings file reads back: " + error.description());
        }
    }
    if (environment.allFiles().size() != 1) {
        violated("the settings file is the only file there is");
    }
    return 0;
}

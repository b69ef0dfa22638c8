// The settings file as the login screen meets it: read at the start, rewritten by a login
// attempt, read again for the session. The input is the file's bytes. Every step either
// fails with a number of ours or goes on; a rewrite that fails leaves the file byte for byte,
// and one that succeeds leaves a file the next start can read.
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/settings_store.h"
#include "fuzz_environment.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    FuzzEnvironment &environment = FuzzEnvironment::instance();
    environment.reset();
    std::filesystem::create_directory(SystemFolder());
    writeBytes(SettingsFilePath(), input);

    try {
        LoginScreenState screen;
        CheckSettingsFile(screen);
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

    if (rewritten) {
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

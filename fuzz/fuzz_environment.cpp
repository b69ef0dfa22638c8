#include "fuzz_environment.h"

#include "core/application_context.h"
#include "core/clock.h"
#include "platform/process_end.h"

#include <QDateTime>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace mirelo::fuzzing {

namespace fs = std::filesystem;

FuzzEnvironment &FuzzEnvironment::instance() {
    // Never destroyed: the folder is removed at exit, after static objects may be gone.
    static FuzzEnvironment *const environment = new FuzzEnvironment;
    return *environment;
}

FuzzEnvironment::FuzzEnvironment() {
    std::string pattern = (fs::temp_directory_path() / "mirelo-fuzz-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        violated("a private temporary folder can be made");
    }
    root_ = pattern;
    appDir_ = root_ + "/outer/middle/app";
    std::atexit([] {
        std::error_code ignored;
        fs::remove_all(instance().root_, ignored);
    });
    freezeClockForTesting(QDateTime(QDate(2026, 3, 15), QTime(14, 5, 9)));
    platform::setMsgBoxPresenter([](const platform::MsgBoxRequest &request) {
        instance().boxes.push_back(request);
        return request.buttons == platform::MsgBoxButtons::YesNo ? platform::MsgBoxResult::Yes
                                                                 : platform::MsgBoxResult::OK;
    });
    platform::setEndProcessHandler([] {
        instance().processEnded = true;
        throw ProcessEnded{};
    });
}

void FuzzEnvironment::reset() {
    fs::remove_all(root_);
    fs::create_directories(appDir_ + "/in");
    fs::create_directories(appDir_ + "/data");
    setApplicationDirectoryForTesting(appDir_);
    session() = SessionValues{};
    session().gDataPath = appDir_ + "/data/";
    boxes.clear();
    processEnded = false;
}

std::map<std::string, std::string> FuzzEnvironment::allFiles() const {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(root_)) {
        if (!entry.is_directory()) {
            files[entry.path().string()] = readBytes(entry.path().string());
        }
    }
    return files;
}

void violated(const std::string &expectation) {
    std::fprintf(stderr, "Outcome not allowed: %s\n", expectation.c_str());
    std::abort();
}

} // namespace mirelo::fuzzing

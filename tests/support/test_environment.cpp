#include "test_environment.h"

#include "core/clock.h"
#include "platform/browser.h"
#include "platform/process_end.h"
#include "platform/record_lock.h"

namespace mirelo::testing {

void ApplicationTest::SetUp() {
    std::filesystem::create_directory(appDir_ + "/in");
    std::filesystem::create_directory(appDir_ + "/data");
    setApplicationDirectoryForTesting(appDir_);
    session() = SessionValues{};
    session().gDataPath = appDir_ + "/data/";
    freezeClockForTesting(QDateTime(QDate(2026, 3, 15), QTime(14, 5, 9)));
    platform::setMsgBoxPresenter([this](const platform::MsgBoxRequest &request) {
        boxes.push_back(request);
        if (!nextAnswers.empty()) {
            const platform::MsgBoxResult answer = nextAnswers.front();
            nextAnswers.pop_front();
            return answer;
        }
        return request.buttons == platform::MsgBoxButtons::YesNo ? platform::MsgBoxResult::Yes
                                                                 : platform::MsgBoxResult::OK;
    });
    platform::setEndProcessHandler([this] {
        processEnded = true;
        throw ProcessEnded{};
    });
    platform::setLockPauseForTesting([](std::chrono::milliseconds) {});
}

void ApplicationTest::TearDown() {
    platform::setBrowserFactory({});
    platform::setMsgBoxPresenter({});
    platform::setEndProcessHandler({});
    platform::setLockPauseForTesting({});
    freezeClockForTesting(QDateTime());
    setApplicationDirectoryForTesting("");
    session() = SessionValues{};
}

Texts ApplicationTest::said() {
    static const char *const icons[] = {"", "stop", "exclamation", "warning"};
    Texts lines;
    for (const platform::MsgBoxRequest &box : boxes) {
        std::string kind = icons[static_cast<int>(box.icon)];
        if (box.buttons == platform::MsgBoxButtons::YesNo) {
            kind += " yes/no";
        }
        if (box.title != "Mirelo") {
            kind += " title " + box.title;
        }
        lines.push_back("[" + kind + "] " + box.text);
    }
    boxes.clear();
    return lines;
}

std::vector<std::string> filesHolding(const std::string &folder, const std::string &text,
                                      const std::string &leftOut) {
    std::vector<std::string> holding;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path() != leftOut &&
            readBytes(entry.path().string()).find(text) != std::string::npos) {
            holding.push_back(entry.path().string());
        }
    }
    return holding;
}

std::string latin1ToUtf8(const std::string &latin1) {
    return QString::fromLatin1(latin1).toStdString();
}

std::map<std::string, std::string> filesUnder(const std::string &folder) {
    std::map<std::string, std::string> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_directory() && entry.path().filename() != platform::RecordLockFileName) {
            files[std::filesystem::relative(entry.path(), folder)] = readBytes(entry.path());
        }
    }
    return files;
}

std::set<std::string> filesIn(const std::string &folder) {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

} // namespace mirelo::testing

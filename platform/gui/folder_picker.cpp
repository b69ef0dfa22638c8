#include "platform/gui/folder_picker.h"

#include <QFileDialog>
#include <deque>

namespace mirelo::platform {
namespace {

std::deque<std::optional<std::string>> &nextChoices() {
    static std::deque<std::optional<std::string>> choices;
    return choices;
}

} // namespace

std::optional<std::string> BrowseForFolder(QWidget *owner, const std::string &title) {
    if (!nextChoices().empty()) {
        std::optional<std::string> choice = std::move(nextChoices().front());
        nextChoices().pop_front();
        return choice;
    }
    const QString folder = QFileDialog::getExistingDirectory(owner, QString::fromStdString(title));
    if (folder.isEmpty()) {
        return std::nullopt;
    }
    return folder.toStdString();
}

void setNextFolderChoice(std::optional<std::string> choice) {
    nextChoices().push_back(std::move(choice));
}

} // namespace mirelo::platform

#include "platform/gui/file_pickers.h"

#include <QFileDialog>
#include <deque>

namespace mirelo::platform {
namespace {

using Choices = std::deque<std::optional<std::string>>;

Choices &nextFolders() {
    static Choices choices;
    return choices;
}

Choices &nextFilesToSave() {
    static Choices choices;
    return choices;
}

// The choice a test queued, if any, else the user's in the dialog.
template <typename Ask> std::optional<std::string> choose(Choices &queued, Ask ask) {
    if (!queued.empty()) {
        std::optional<std::string> choice = std::move(queued.front());
        queued.pop_front();
        return choice;
    }
    const QString chosen = ask();
    if (chosen.isEmpty()) {
        return std::nullopt;
    }
    return chosen.toStdString();
}

} // namespace

std::optional<std::string> BrowseForFolder(QWidget *owner, const std::string &title) {
    return choose(nextFolders(), [&] {
        return QFileDialog::getExistingDirectory(owner, QString::fromStdString(title));
    });
}

void setNextFolderChoice(std::optional<std::string> choice) {
    nextFolders().push_back(std::move(choice));
}

std::optional<std::string> ChooseFileToSave(QWidget *owner, const std::string &title,
                                            const std::string &suggested, const std::string &filter,
                                            const std::string &extension) {
    return choose(nextFilesToSave(), [&] {
        QFileDialog dialog(owner, QString::fromStdString(title), QString(),
                           QString::fromStdString(filter));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QString::fromStdString(extension));
        dialog.selectFile(QString::fromStdString(suggested));
        return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
    });
}

void setNextFileToSave(std::optional<std::string> choice) {
    nextFilesToSave().push_back(std::move(choice));
}

} // namespace mirelo::platform

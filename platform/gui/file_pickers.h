#pragma once

#include <optional>
#include <string>

class QWidget;

namespace mirelo::platform {

// The desktop's choosers of a folder and of a file to save. Each gives the chosen path, or
// nothing when the user cancelled; tests give the next choice instead of the user, each taken
// once.

// File-system folders only.
std::optional<std::string> BrowseForFolder(QWidget *owner, const std::string &title);
void setNextFolderChoice(std::optional<std::string> choice);

// A file to write, starting at `suggested` (a folder and a name); a name typed without the
// filter's extension gets it.
std::optional<std::string> ChooseFileToSave(QWidget *owner, const std::string &title,
                                            const std::string &suggested, const std::string &filter,
                                            const std::string &extension);
void setNextFileToSave(std::optional<std::string> choice);

} // namespace mirelo::platform

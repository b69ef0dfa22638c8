#pragma once

#include <optional>
#include <string>

class QWidget;

namespace mirelo::platform {

// The folder choice of the desktop, file-system folders only: the chosen folder's path, or
// nothing when the user cancelled.
std::optional<std::string> BrowseForFolder(QWidget *owner, const std::string &title);

// Tests give the next choice instead of the user; each is taken once.
void setNextFolderChoice(std::optional<std::string> choice);

} // namespace mirelo::platform

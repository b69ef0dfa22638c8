#include "core/text_file.h"

#include "platform/file_system.h"

namespace mirelo {

std::string ReadTextFile(const std::string &path) {
    return platform::ReadAllBytes(path);
}

void WriteTextFile(const std::string &text, const std::string &path) {
    platform::WriteAllBytes(path, text);
}

} // namespace mirelo

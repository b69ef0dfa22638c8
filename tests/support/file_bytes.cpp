#include "file_bytes.h"

#include "core/clock.h"

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace mirelo::testing {

std::string readBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string &path, const std::string &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

void writeFinishedMessage(const std::string &path, const std::string &bytes, int secondsAgo) {
    writeBytes(path, bytes);
    const timespec changed{static_cast<time_t>(Now().toSecsSinceEpoch() - secondsAgo), 0};
    const timespec times[] = {changed, changed};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

} // namespace mirelo::testing

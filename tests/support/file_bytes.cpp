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

std::string scrambleBytes(const std::string &latin1) {
    std::string stored;
    for (const unsigned char c : latin1) {
        stored += static_cast<char>(c % 2 == 0 ? c + 3 : c + 5);
    }
    return stored;
}

std::string unscrambleBytes(const std::string &stored) {
    std::string plain;
    for (const unsigned char s : stored) {
        plain += static_cast<char>(s % 2 == 1 ? s - 3 : s - 5);
    }
    return plain;
}

} // namespace mirelo::testing

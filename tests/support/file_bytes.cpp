#include "file_bytes.h"

#include <fstream>
#include <iterator>

namespace mirelo::testing {

std::string readBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::string &path, const std::string &bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

} // namespace mirelo::testing

#include "core/document_reading.h"

#include <string>

namespace mirelo {

platform::XmlNode FirstAt(const platform::XmlDocument &document,
                          const std::vector<platform::XmlNode> &bases, const char *base,
                          const char *path) {
    if (bases.size() == 1) {
        return bases.front().firstElementAt(path);
    }
    return document.firstElementAt(std::string(base) + "/" + path);
}

} // namespace mirelo

#include "physical_limits.h"

#include "bench_data.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace mirelo::bench::limit {
namespace {

using Table = unsigned char[256];

struct Tables {
    Table scramble = {};
    Table unscramble = {};
    Tables() {
        for (int code = 0; code < 256; ++code) {
            scramble[code] = static_cast<unsigned char>(code % 2 == 0 ? code + 3 : code + 5);
            unscramble[code] = static_cast<unsigned char>(code % 2 == 1 ? code - 3 : code - 5);
        }
    }
};

const Tables &tables() {
    static const Tables shared;
    return shared;
}

xmlDocPtr parse(const std::string &bytes) {
    xmlDocPtr doc = xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                  XML_PARSE_NONET | XML_PARSE_NOBLANKS);
    if (doc == nullptr) {
        throw std::runtime_error("the limit's document doesn't parse");
    }
    return doc;
}

void collectProducts(xmlNodePtr node, std::vector<std::vector<std::string>> &products) {
    for (; node != nullptr; node = node->next) {
        if (node->type != XML_ELEMENT_NODE) {
            continue;
        }
        if (xmlStrEqual(node->name, reinterpret_cast<const xmlChar *>("Product"))) {
            std::vector<std::string> &texts = products.emplace_back();
            for (xmlNodePtr field = node->children; field != nullptr; field = field->next) {
                const xmlNodePtr text = field->children;
                texts.emplace_back(text != nullptr && text->content != nullptr
                                       ? reinterpret_cast<const char *>(text->content)
                                       : "");
            }
        } else {
            collectProducts(node->children, products);
        }
    }
}

} // namespace

void shiftBytes(const std::string &in, std::string &out, const Table &table) {
    out.resize(in.size());
    const auto *from = reinterpret_cast<const unsigned char *>(in.data());
    auto *to = reinterpret_cast<unsigned char *>(out.data());
    for (size_t i = 0; i < in.size(); ++i) {
        to[i] = table[from[i]];
    }
}

const Table &scrambleTable() {
    return tables().scramble;
}

const Table &unscrambleTable() {
    return tables().unscramble;
}

void parseOnce(const std::string &bytes) {
    xmlFreeDoc(parse(bytes));
}

std::vector<std::vector<std::string>> productTexts(const std::string &path) {
    std::string plain;
    shiftBytes(readFile(path), plain, unscrambleTable());
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(parse(plain), xmlFreeDoc);
    std::vector<std::vector<std::string>> products;
    collectProducts(doc->children, products);
    return products;
}

void waitForWholeFileLock(const std::string &path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (descriptor < 0 || ::fcntl(descriptor, F_OFD_SETLKW, &whole) != 0) {
        throw std::runtime_error("the limit's lock wasn't taken");
    }
    ::close(descriptor);
}

std::vector<std::string> folderNames(const std::string &folder, const std::string &prefix) {
    const std::unique_ptr<DIR, int (*)(DIR *)> listing(::opendir(folder.c_str()), ::closedir);
    std::vector<std::string> names;
    while (const dirent *entry = ::readdir(listing.get())) {
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0) {
            names.emplace_back(entry->d_name);
        }
    }
    return names;
}

} // namespace mirelo::bench::limit

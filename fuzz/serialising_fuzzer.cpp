// A document read as a patient file's text is read. For it, and for every element in it, the
// one-pass writer gives the very bytes libxml2's serialiser gives, or leaves the tree to libxml2;
// so it does where a stored file writes the characters its code lacks as references.
#include "core/text_scrambling.h"
#include "fuzz_environment.h"
#include "platform/xml_document.h"
#include "platform/xml_serialising.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

using namespace mirelo;
using namespace mirelo::fuzzing;

namespace {

void writtenAsLibxml2WritesIt(const platform::XmlNode &node) {
    const std::optional<std::string> plain = platform::PlainTreeXml(node.handle());
    if (plain && *plain != platform::LibxmlSerialisedXml(node.handle(), "UTF-8")) {
        violated("the one-pass writer writes what libxml2's serialiser writes");
    }
    const std::optional<std::string> stored = platform::PlainTreeXml(node.handle(), CanScramble);
    if (stored && *stored != platform::LibxmlSerialisedXml(node.handle(), "UTF-8", CanScramble)) {
        violated("the one-pass writer writes the references libxml2's serialiser writes");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    platform::XmlDocument document;
    if (!document.loadXML(std::string(reinterpret_cast<const char *>(data), size))) {
        return 0;
    }
    writtenAsLibxml2WritesIt(document.asNode());
    for (const platform::XmlNode &element : document.selectNodes("//*")) {
        writtenAsLibxml2WritesIt(element);
    }
    return 0;
}

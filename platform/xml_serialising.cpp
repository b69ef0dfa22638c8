#include "platform/xml_serialising.h"

#include "core/mirelo_error.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <libxml/chvalid.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>
#include <libxml/xmlstring.h>
#include <string_view>
#include <strings.h>

namespace mirelo::platform {
namespace {

// libxml2 indents a level by one copy of its indent string, up to this many.
constexpr int DeepestIndent = 60;

// Element text is escaped as the old serialiser did: the three markup characters only. A
// carriage return goes out as it stands, so a line break typed as CR LF is stored as CR LF;
// libxml2's own escaping would write it as a character reference.
constexpr const char *MarkupCharacters = "<>&";

// What a character of element text is written as; nothing for one written as it stands.
std::string_view markupReplacement(unsigned char c) {
    return c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string_view();
}

// The character test of the libxml2 save under way on this thread; its escaping callback can
// be handed nothing of its own.
thread_local CharacterTest savedKeeps = nullptr;

// The character that starts at `in`, among `available` bytes, as `keeps` has it written: its
// character reference in `reference`, or nothing when it is written as it stands. `length` is
// how many bytes it takes. A character that XML can't carry, or bytes that are no UTF-8, stand
// as they are: no reference could carry them, and the stored text refuses them itself.
std::string_view referenceFor(const unsigned char *in, size_t available, CharacterTest keeps,
                              int &length, std::array<char, 16> &reference) {
    length = static_cast<int>(std::min<size_t>(available, 4));
    const int c = xmlGetUTF8Char(in, &length);
    if (c < 0) {
        length = 1;
        return {};
    }
    if (keeps(static_cast<char32_t>(c)) || !xmlIsCharQ(c)) {
        return {};
    }
    const int written = std::snprintf(reference.data(), reference.size(), "&#%d;", c);
    return std::string_view(reference.data(), static_cast<size_t>(written));
}

// The escaping above, as libxml2's serialiser asks for it: a piece at a time, into a buffer
// that may be too short for the rest.
int escapeMarkup(unsigned char *out, int *outLength, const unsigned char *in, int *inLength) {
    const unsigned char *const inEnd = in + *inLength;
    const unsigned char *const inStart = in;
    unsigned char *const outEnd = out + *outLength;
    unsigned char *const outStart = out;
    std::array<char, 16> reference;
    while (in < inEnd) {
        std::string_view replacement = markupReplacement(*in);
        int taken = 1;
        if (replacement.empty() && *in >= 0x80 && savedKeeps != nullptr) {
            replacement =
                referenceFor(in, static_cast<size_t>(inEnd - in), savedKeeps, taken, reference);
        }
        const size_t size = replacement.empty() ? static_cast<size_t>(taken) : replacement.size();
        if (static_cast<size_t>(outEnd - out) < size) {
            break;
        }
        std::memcpy(
            out,
            replacement.empty() ? in : reinterpret_cast<const unsigned char *>(replacement.data()),
            size);
        out += size;
        in += taken;
    }
    *outLength = static_cast<int>(out - outStart);
    *inLength = static_cast<int>(in - inStart);
    return *outLength;
}

int appendToText(void *text, const char *bytes, int length) {
    static_cast<std::string *>(text)->append(bytes, length);
    return length;
}

// The one-pass writer. It gives up, returning false, at the first node it doesn't write as
// libxml2 does.
class PlainTreeWriter {
  public:
    PlainTreeWriter(std::string &text, CharacterTest keeps) : text_(text), keeps_(keeps) {}

    bool topLevelNode(const xmlNode *node) {
        if (node->type == XML_PI_NODE) {
            declaration(node);
            return true;
        }
        return element(node, 0);
    }

  private:
    static bool isPlainElement(const xmlNode *node) {
        return node->type == XML_ELEMENT_NODE && node->ns == nullptr && node->nsDef == nullptr &&
               node->properties == nullptr;
    }

    // An element that holds text is written on one line, whatever else it holds, so that no
    // line break or tab is added to its text.
    static bool holdsText(const xmlNode *element) {
        for (const xmlNode *child = element->children; child != nullptr; child = child->next) {
            if (child->type == XML_TEXT_NODE) {
                return true;
            }
        }
        return false;
    }

    void declaration(const xmlNode *node) {
        text_ += "<?";
        text_ += reinterpret_cast<const char *>(node->name);
        if (node->content != nullptr) {
            text_ += ' ';
            text_ += reinterpret_cast<const char *>(node->content);
        }
        text_ += "?>";
    }

    void indent(int level) { text_.append(std::min(level, DeepestIndent), '\t'); }

    void escaped(const char *content) {
        while (*content != '\0') {
            const size_t plain = std::strcspn(content, MarkupCharacters);
            if (keeps_ != nullptr) {
                referencing(content, plain);
            } else {
                text_.append(content, plain);
            }
            content += plain;
            if (*content == '\0') {
                break;
            }
            text_ += markupReplacement(static_cast<unsigned char>(*content));
            ++content;
        }
    }

    // A run of text without markup, with every character that keeps_ refuses written as a
    // reference. Most text is ASCII, which needs no look at its characters: eight bytes at a time
    // are checked for a high bit.
    void referencing(const char *run, size_t length) {
        const char *const end = run + length;
        std::array<char, 16> reference;
        while (run < end) {
            const char *high = run;
            for (uint64_t eight = 0; end - high >= 8; high += 8) {
                std::memcpy(&eight, high, 8);
                if ((eight & 0x8080808080808080ull) != 0) {
                    break;
                }
            }
            while (high < end && static_cast<unsigned char>(*high) < 0x80) {
                ++high;
            }
            text_.append(run, high);
            if (high == end) {
                break;
            }
            int taken = 1;
            const std::string_view replacement =
                referenceFor(reinterpret_cast<const unsigned char *>(high),
                             static_cast<size_t>(end - high), keeps_, taken, reference);
            if (replacement.empty()) {
                text_.append(high, static_cast<size_t>(taken));
            } else {
                text_ += replacement;
            }
            run = high + taken;
        }
    }

    // Writes an element from its start tag on; its line's indentation is already written.
    // `laidOut` says whether its parent puts each child on a line of its own.
    bool element(const xmlNode *element, int level, bool laidOut = true) {
        if (!isPlainElement(element)) {
            return false;
        }
        const char *name = reinterpret_cast<const char *>(element->name);
        text_ += '<';
        text_ += name;
        if (element->children == nullptr) {
            text_ += "/>";
            return true;
        }
        const bool childrenLaidOut = laidOut && !holdsText(element);
        text_ += '>';
        if (childrenLaidOut) {
            text_ += '\n';
        }
        for (const xmlNode *child = element->children; child != nullptr; child = child->next) {
            if (child->type == XML_TEXT_NODE) {
                if (child->name == xmlStringTextNoenc) {
                    return false;
                }
                if (child->content != nullptr) {
                    escaped(reinterpret_cast<const char *>(child->content));
                }
            } else {
                if (childrenLaidOut) {
                    indent(level + 1);
                }
                if (!this->element(child, level + 1, childrenLaidOut)) {
                    return false;
                }
            }
            if (childrenLaidOut) {
                text_ += '\n';
            }
        }
        if (childrenLaidOut) {
            indent(level);
        }
        text_ += "</";
        text_ += name;
        text_ += '>';
        return true;
    }

    std::string &text_;
    CharacterTest keeps_;
};

} // namespace

std::string SerialisedXml(xmlNodePtr node, const char *encoding, CharacterTest keeps) {
    if (strcasecmp(encoding, "UTF-8") == 0) {
        if (std::optional<std::string> text = PlainTreeXml(node, keeps)) {
            return *std::move(text);
        }
    }
    return LibxmlSerialisedXml(node, encoding, keeps);
}

std::string LibxmlSerialisedXml(xmlNodePtr node, const char *encoding, CharacterTest keeps) {
    xmlTreeIndentString = "\t";
    std::string text;
    xmlSaveCtxtPtr save =
        xmlSaveToIO(appendToText, nullptr, &text, encoding, XML_SAVE_NO_DECL | XML_SAVE_FORMAT);
    if (save == nullptr) {
        runtime::raise(runtime::InvalidArgument);
    }
    xmlSaveSetEscape(save, escapeMarkup);
    savedKeeps = keeps;
    if (node->type == XML_DOCUMENT_NODE) {
        xmlSaveDoc(save, reinterpret_cast<xmlDocPtr>(node));
    } else {
        xmlSaveTree(save, node);
    }
    xmlSaveClose(save);
    savedKeeps = nullptr;
    text.resize(std::strlen(text.c_str()));
    return text;
}

std::optional<std::string> PlainTreeXml(xmlNodePtr node, CharacterTest keeps) {
    std::string text;
    PlainTreeWriter writer(text, keeps);
    if (node->type == XML_ELEMENT_NODE) {
        return writer.topLevelNode(node) ? std::optional(std::move(text)) : std::nullopt;
    }
    const auto *doc = reinterpret_cast<const xmlDoc *>(node);
    if (node->type != XML_DOCUMENT_NODE || doc->intSubset != nullptr) {
        return std::nullopt;
    }
    for (const xmlNode *child = node->children; child != nullptr; child = child->next) {
        if (!writer.topLevelNode(child)) {
            return std::nullopt;
        }
        text += '\n';
    }
    return text;
}

} // namespace mirelo::platform

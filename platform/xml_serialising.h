#pragma once

#include <optional>
#include <string>

struct _xmlNode;

namespace mirelo::platform {

// Whether a text may hold the character as it stands.
using CharacterTest = bool (*)(char32_t);

// A node, or a whole document, as its file holds it: nested elements indented by tabs, element
// text with only the three markup characters escaped, in the encoding given. Our own declaration
// node stands first; libxml2 adds none. The text ends at its first NUL, as it always has: a
// two-byte encoding is cut there. Given `keeps`, a character of element text that it refuses is
// written as a character reference, which every XML reader reads back as the character.
std::string SerialisedXml(_xmlNode *node, const char *encoding, CharacterTest keeps = nullptr);

// The same text as libxml2's serialiser writes it.
std::string LibxmlSerialisedXml(_xmlNode *node, const char *encoding,
                                CharacterTest keeps = nullptr);

// The same text in UTF-8, written in one pass, for the trees Mirelo's own files hold: elements
// without attributes or namespaces, their text, and declarations at the top.
// Nothing for any other tree, which libxml2 then writes. Its many small writes per element
// cost the intake into a long list a third of its time.
std::optional<std::string> PlainTreeXml(_xmlNode *node, CharacterTest keeps = nullptr);

} // namespace mirelo::platform

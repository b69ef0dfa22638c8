#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// A document of ours opens with the ISO-8859-1 declaration, then its root element (made with
// the type number). Gives the root.
platform::XmlNode StartDocument(platform::XmlDocument &document, const std::string &rootName);

// A first-level node under the root or another node, made with the type number.
platform::XmlNode AppendElement(platform::XmlDocument &document, platform::XmlNode parent,
                                const std::string &name);

// A field, made with the type word and given its text; an empty text still gives an element,
// so that later queries find it.
platform::XmlNode AppendField(platform::XmlDocument &document, platform::XmlNode parent,
                              const std::string &name, const std::string &text);

} // namespace mirelo

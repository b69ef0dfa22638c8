#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo::platform {

// A document of ours opens with the ISO-8859-1 declaration, then its root element (made with
// the type number). Gives the root.
XmlNode StartDocument(XmlDocument &document, const std::string &rootName);

} // namespace mirelo::platform

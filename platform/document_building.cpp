#include "platform/document_building.h"

namespace mirelo::platform {

XmlNode StartDocument(XmlDocument &document, const std::string &rootName) {
    document.appendChild(document.createProcessingInstruction("xml", DeclarationData));
    return document.appendChild(document.createNode(XmlDocument::NODE_ELEMENT, rootName, ""));
}

} // namespace mirelo::platform

#include "core/document_building.h"

namespace mirelo {

platform::XmlNode StartDocument(platform::XmlDocument &document, const std::string &rootName) {
    document.appendChild(document.createProcessingInstruction("xml", platform::DeclarationData));
    return document.appendChild(
        document.createNode(platform::XmlDocument::NODE_ELEMENT, rootName, ""));
}

} // namespace mirelo

#include "core/document_building.h"

namespace mirelo {

platform::XmlNode StartDocument(platform::XmlDocument &document, const std::string &rootName) {
    document.appendChild(document.createProcessingInstruction("xml", platform::DeclarationData));
    return document.appendChild(
        document.createNode(platform::XmlDocument::NODE_ELEMENT, rootName, ""));
}

platform::XmlNode AppendElement(platform::XmlDocument &document, platform::XmlNode parent,
                                const std::string &name) {
    return parent.appendChild(document.createNode(platform::XmlDocument::NODE_ELEMENT, name, ""));
}

platform::XmlNode AppendField(platform::XmlDocument &document, platform::XmlNode parent,
                              const std::string &name, const std::string &text) {
    platform::XmlNode field = document.createNode("ELEMENT", name, "");
    field.setText(text);
    return parent.appendChild(field);
}

} // namespace mirelo

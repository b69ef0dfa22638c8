#pragma once

#include "platform/xml_document.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mirelo {

// One Product, in the form of the patient file, for each prescribed item of the message, in
// the message's order, under a VnrCheck root. A message without items gives an empty root and
// reads nothing else. An element the message lacks fails the whole message (91), except the
// dosage text, which may be missing; a repeat number that isn't a number fails it too (13), and
// a text longer than a field may be refuses it as damaged.
platform::XmlDocument BuildNefXML(const platform::XmlDocument &message);
// The same products, made under `root`, an element of any document; gives their IDs in the
// same order. Given the message's size, a message whose products would copy more of its text
// than a patient file may grow by for it is refused before they are made.
std::vector<std::string>
AppendNefProducts(const platform::XmlDocument &message, const platform::XmlNode &root,
                  std::optional<std::uintmax_t> messageBytes = std::nullopt);

} // namespace mirelo

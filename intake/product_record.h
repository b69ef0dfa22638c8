#pragma once

#include "platform/xml_document.h"

namespace mirelo {

// One Product, in the form of the patient file, for each prescribed item of the message, in
// the message's order, under a VnrCheck root. A message without items gives an empty root and
// reads nothing else. An element the message lacks fails the whole message (91), except the
// dosage text, which may be missing; a repeat number that isn't a number fails it too (13).
platform::XmlDocument BuildNefXML(const platform::XmlDocument &message);
// The same products, made under `root`, an element of any document.
void AppendNefProducts(const platform::XmlDocument &message, const platform::XmlNode &root);

} // namespace mirelo

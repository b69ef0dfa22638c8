#pragma once

#include "platform/xml_document.h"

namespace mirelo {

// The product numbers of a prescription message as a VnrCheck document: one Product per item,
// in the patient file's shape, with only what the message itself says of the prescription.
platform::XmlDocument BuildVnrXML(const platform::XmlDocument &message);

// Posts the VnrCheck document to gServer + "/mirelo/vnr.asp" and gives the parsed answer.
// Intake does not call this: it builds its records from the message alone.
platform::XmlDocument PostVnrCheck(const platform::XmlDocument &message);

} // namespace mirelo

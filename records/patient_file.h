#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// The file of a patient: gDataPath + personal number + ".xml", the number as it stands.
std::string PatientFilePath(const std::string &pnr);

// Read, unscramble and drop every tab, the tabs the serialiser put in front of nested elements
// and any inside values too, so that they don't pile up with each reading and writing.
std::string ReadPatientText(const std::string &path);

// The one reading path: the text above, parsed. A file that doesn't parse is 0x80040204
// "Patientfil är skadad." with the parser's reason.
platform::XmlDocument ReadPatientFile(const std::string &path);

// The search list reads the unscrambled text as it stands, tabs and all.
platform::XmlDocument ReadPatientFileKeepingTabs(const std::string &path);

// The one writing path: the document's text, scrambled, written over the file in place.
void WritePatientFile(const platform::XmlDocument &patient, const std::string &path);

} // namespace mirelo

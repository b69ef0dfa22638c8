#pragma once

#include "platform/xml_document.h"

#include <optional>
#include <string>

namespace mirelo {

// The document that carries the user over to the service's page: who is logged in, where the
// service is to leave its prescriptions, which version calls, and then either the patient
// with the current medication or, with no patient document, only a personal number.
// A failure is shown here ("Kunde inte skapa förskrivningsfil: ") and gives no document.
// The patient document's nodes move into the new document.
std::optional<platform::XmlDocument> CreatePrescriptionXML(platform::XmlDocument *patient,
                                                           const std::string &pnr);

} // namespace mirelo

#pragma once

#include "platform/xml_document.h"

#include <optional>
#include <string>

namespace mirelo {

// Opens the service's hand-over page in a browser of its own, fills the first form's txtXml
// with the handover document, posts it and leaves the user in the browser, shown maximised
// and in front. Every failure is handled here.
void SubmitPrescriptionXML(const std::optional<platform::XmlDocument> &handover);

// The same for a personal number that has no patient file: the document holds only the
// number, and the browser is shown before the form is filled.
void SubmitPatientPnr(const std::string &pnr);

// Fills the page's Login form field by field instead. Complete, and called by nothing.
void SubmitLoginFields(const std::string &pnr);

} // namespace mirelo

#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// Takes one inbound prescription message into the file of the patient it concerns, creating
// the file for a new personal number, and gives the personal number of the message. The file
// is written once, at the end, so any failure leaves it as it was. An empty personal number
// still writes the nameless file ".xml" and gives the empty text: the caller rejects the
// message on that result. A number that can't name a file in the data folder ("../x", "/x")
// gives the empty text too, having written nothing.
std::string ImportPrescriptionFile(const std::string &path);

// Patient with PatientData and its nine empty fields; no MedicalList yet.
platform::XmlDocument NewPatientDocument();

} // namespace mirelo

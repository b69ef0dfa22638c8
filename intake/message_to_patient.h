#pragma once

#include "platform/xml_document.h"

#include <string>

namespace mirelo {

// What became of one message: taken into the file of the patient its IdValue names, or set
// aside, unread beyond that number, because the number is not a personal number.
struct MessageIntake {
    bool takenIn = false;
    std::string idValue;
};

// Takes one inbound prescription message into the file of the patient it concerns, creating
// the file for a new personal number. The file is written once, at the end, so any failure
// leaves it as it was; a message that changes nothing in it, as one taken in before, leaves it
// unwritten. A message whose IdValue is empty, or anything but a personal number
// ("Öberg", "../x"), writes nothing. What a message brings is bounded by its own size and by
// the length of a field; beyond that it is refused as damaged.
MessageIntake TakeInPrescriptionFile(const std::string &path);

// The personal number of a message taken in, or the empty text for one set aside.
std::string ImportPrescriptionFile(const std::string &path);

// Patient with PatientData and its nine empty fields; no MedicalList yet.
platform::XmlDocument NewPatientDocument();

} // namespace mirelo

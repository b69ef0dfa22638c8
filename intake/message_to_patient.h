#pragma once

#include "platform/xml_document.h"
#include "records/patient_file.h"

#include <chrono>
#include <cstdint>
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
// The patient's lock is held from the look for the file to its write. A patient whom another
// workstation is changing is waited for at most `lockPatience`; past that the message fails
// with 0x80040208 and nothing is written.
MessageIntake TakeInPrescriptionFile(const std::string &path,
                                     std::chrono::milliseconds lockPatience = PatientLockPatience);

// What is done under that lock: the message, `messageBytes` long in its file, into the file of
// the patient whose lock the caller holds.
void TakeInMessage(const platform::XmlDocument &message, std::uintmax_t messageBytes,
                   const PatientFileLock &held);

// The personal number of a message taken in, or the empty text for one set aside.
std::string ImportPrescriptionFile(const std::string &path);

// Patient with PatientData and its nine empty fields; no MedicalList yet.
platform::XmlDocument NewPatientDocument();

} // namespace mirelo

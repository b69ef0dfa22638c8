#include "intake/message_to_patient.h"

#include "core/personal_number.h"
#include "intake/medication_list_merge.h"
#include "intake/message_bounds.h"
#include "platform/document_building.h"
#include "platform/file_system.h"
#include "records/patient_file.h"

#include <array>
#include <utility>
#include <vector>

namespace mirelo {
namespace {

// The parser code for a DTD that isn't at hand; such a message is taken as sound.
constexpr int32_t MissingDtd = static_cast<int32_t>(0xC00CE014);

constexpr const char *SubjectOfCare = "//SubjectOfCare/PatientMatchingInfo";
constexpr const char *PatientData = "//PatientData";

// Where each personal field of the patient comes from in the message, in the order written.
const std::array<std::pair<const char *, const char *>, 6> PersonalFields = {{
    {"FamilyName", "PersonNameDetails/StructuredPersonName/FamilyName"},
    {"FirstGivenName", "PersonNameDetails/StructuredPersonName/FirstGivenName"},
    {"Pnr", "PatientId/IdValue"},
    {"StreetName", "Address/StructuredAddress/StreetName"},
    {"PostalCode", "Address/PostalCode"},
    {"City", "Address/StructuredAddress/City"},
}};

// The first element at `path` below any element at `base`: what the query `base/path` selects.
// It is found near the start of a file, so a lookup seldom walks the rest.
platform::XmlNode below(const platform::XmlDocument &document, const char *base, const char *path) {
    return document.firstElementAt(std::string(base) + "/" + path);
}

platform::XmlDocument loadMessage(const std::string &path) {
    platform::XmlDocument message;
    message.setAsync(false);
    message.setValidateOnParse(false);
    message.load(path);
    const platform::ParseError &error = message.parseError();
    if (error.errorCode != 0 && error.errorCode != MissingDtd) {
        RefuseMessage(error.reason);
    }
    return message;
}

// An existing file is read without looking at the parse result: a damaged file shows itself
// as a missing element when the personal fields are written.
platform::XmlDocument readPatient(const std::string &patientPath) {
    platform::XmlDocument patient;
    patient.loadXML(ReadPatientText(patientPath));
    return patient;
}

} // namespace

MessageIntake TakeInPrescriptionFile(const std::string &path,
                                     std::chrono::milliseconds lockPatience) {
    const platform::XmlDocument message = loadMessage(path);
    const std::uintmax_t messageBytes = platform::GetFileStamp(path).size;
    const std::string pnr = FieldText(below(message, SubjectOfCare, "PatientId/IdValue"));
    // Only a personal number names a patient file: anything else could name another file, or
    // a path outside the data folder.
    if (!IsPersonalNumber(pnr)) {
        return {false, pnr};
    }
    const PatientFileLock lock(pnr, lockPatience);
    TakeInMessage(message, messageBytes, lock);
    return {true, pnr};
}

void TakeInMessage(const platform::XmlDocument &message, std::uintmax_t messageBytes,
                   const PatientFileLock &held) {
    // Looked for under the lock: two workstations taking in a new patient's first messages at
    // once would each start a file of their own, and the later would drop the earlier's.
    const std::string patientPath = PatientFilePath(held.pnr());
    const bool known = platform::FileExists(patientPath);
    platform::XmlDocument patient = known ? readPatient(patientPath) : NewPatientDocument();

    // A message taken in before, as after a crash between the write and the deletion, finds
    // its patient as it left them and leaves the file as it is.
    bool changed = !known;
    for (const auto &[field, source] : PersonalFields) {
        const std::string value = FieldText(below(message, SubjectOfCare, source));
        const platform::XmlNode target = below(patient, PatientData, field);
        if (target.text() != value) {
            target.setText(value);
            changed = true;
        }
    }
    changed = TakeInMessageItems(message, patient, messageBytes) || changed;
    if (!changed) {
        return;
    }

    const std::string stored = StoredPatientBytes(patient);
    const std::uintmax_t before = known ? platform::GetFileStamp(patientPath).size : 0;
    CheckGrowth(stored.size() > before ? stored.size() - before : 0, messageBytes);
    platform::WriteAllBytes(patientPath, stored);
}

std::string ImportPrescriptionFile(const std::string &path) {
    const MessageIntake intake = TakeInPrescriptionFile(path);
    return intake.takenIn ? intake.idValue : std::string();
}

platform::XmlDocument NewPatientDocument() {
    platform::XmlDocument patient;
    const platform::XmlNode root = platform::StartDocument(patient, "Patient");
    const platform::XmlNode data = root.appendElement("PatientData");
    for (const char *field : {"FamilyName", "FirstGivenName", "Pnr", "StreetName", "PostalCode",
                              "City", "GeneralInfo", "GeneralInfoBy", "GeneralInfoTimestamp"}) {
        data.appendElement(field, "");
    }
    return patient;
}

} // namespace mirelo

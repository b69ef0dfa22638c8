#include "records/note_records.h"

#include "core/clock.h"
#include "core/conversions.h"
#include "platform/document_building.h"
#include "platform/file_system.h"
#include "platform/message_box.h"
#include "records/patient_file.h"

#include <vector>

namespace mirelo {
namespace {

// The file of one operation, its patient locked from the read to the write, parsed afresh;
// written back only by close().
struct OpenPatientFile {
    platform::FileEntry file;
    PatientFileLock lock;
    platform::XmlDocument patient;

    explicit OpenPatientFile(const std::string &pnr)
        : file(platform::GetFile(PatientFilePath(pnr))), lock(pnr),
          patient(ReadPatientFile(file.Path)) {}

    void close() const { WritePatientFile(patient, file.Path); }

    platform::XmlNode product(const std::string &id) const {
        return patient.selectSingleNode("//Product[ID = \"" + id + "\"]");
    }

    std::vector<platform::XmlNode> productsOf(const std::string &regNr) const {
        return patient.selectNodes("//Product[RegNr = \"" + regNr + "\"]");
    }
};

void set(const platform::XmlNode &parent, const char *name, const std::string &text) {
    parent.selectSingleNode(name).setText(text);
}

std::string regNrOf(const platform::XmlNode &product) {
    return product.selectSingleNode("RegNr").text();
}

void clearNote(const platform::XmlNode &product, const std::string &signature) {
    set(product, "Allergic", "0");
    set(product, "ExtendedMedicalInfo", "");
    set(product, "ExtendedMedicalInfoBy", signature);
    set(product, "ExtendedMedicalInfoTimestamp", LocalTimestamp());
}

void writeNote(const OpenPatientFile &open, const std::string &regNr, const std::string &note,
               const std::string &signature, const int *allergic) {
    // A product without a RegNr has nothing to spread to, and the typed note is dropped.
    if (regNr.empty()) {
        return;
    }
    for (const platform::XmlNode &product : open.productsOf(regNr)) {
        if (allergic != nullptr) {
            set(product, "Allergic", std::to_string(*allergic));
        }
        set(product, "ExtendedMedicalInfo", note);
        set(product, "ExtendedMedicalInfoBy", signature);
        set(product, "ExtendedMedicalInfoTimestamp", LocalTimestamp());
    }
}

std::string signedNow(const std::string &signature) {
    return signature + " - " + LocalTimestamp();
}

} // namespace

void SaveMedicalNote(const std::string &pnr, const std::string &id, const std::string &note,
                     int allergic, const std::string &signature) {
    const OpenPatientFile open(pnr);
    writeNote(open, regNrOf(open.product(id)), note, signature, &allergic);
    open.close();
}

void SaveProductNote(const std::string &pnr, const std::string &id, const std::string &note,
                     const std::string &signature,
                     const std::function<void(const std::string &)> &setNoteChangedCaption) {
    const OpenPatientFile open(pnr);
    writeNote(open, regNrOf(open.product(id)), note, signature, nullptr);
    setNoteChangedCaption(signedNow(signature));
    open.close();
}

void deleteNote(const std::string &pnr, const std::string &id, const std::string &signature,
                NoteScreen screen) {
    const OpenPatientFile open(pnr);
    const platform::XmlNode picked = open.product(id);
    // The author and time are stamped, not cleared: they tell who removed the note.
    clearNote(picked, signature);
    const std::string regNr = regNrOf(picked);
    const bool spread = screen == NoteScreen::MedicalNote ? !regNr.empty() : CBool(regNr);
    if (spread) {
        for (const platform::XmlNode &product : open.productsOf(regNr)) {
            clearNote(product, signature);
        }
    }
    open.close();
}

void SaveAllergicHistory(const std::string &pnr, const std::string &id, int allergic,
                         const std::string &reason, const std::string &signature,
                         NoteScreen screen) {
    OpenPatientFile open(pnr);
    platform::XmlDocument &patient = open.patient;
    const platform::XmlNode picked = open.product(id);
    if (screen == NoteScreen::ExtendedInfo) {
        set(picked, "AllergicHistory", "1");
    }
    const std::string regNr = regNrOf(picked);
    AllergicHistoryNode created;
    if (screen == NoteScreen::MedicalNote || !regNr.empty()) {
        created = CreateAllergicHistoryNode(regNr, allergic, reason, signature);
    }

    platform::XmlNode history;
    if (patient.selectNodes("//History").empty()) {
        history = patient.createNode(platform::XmlDocument::NODE_ELEMENT, "History", "");
    } else {
        history = patient.selectSingleNode("//History");
    }
    // The newest record first; with no record made (an empty RegNr on the extended information
    // screen) this is where the operation fails.
    const std::vector<platform::XmlNode> records = history.childNodes();
    history.insertBefore(created.record, records.empty() ? platform::XmlNode() : records.front());
    patient.documentElement().appendChild(history);

    if (!regNr.empty()) {
        for (const platform::XmlNode &product : open.productsOf(regNr)) {
            set(product, "Allergic", std::to_string(allergic));
            set(product, "AllergicHistory", "1");
        }
    }
    open.close();
}

AllergicHistoryNode CreateAllergicHistoryNode(const std::string &regNr, int allergic,
                                              const std::string &reason,
                                              const std::string &signature) {
    AllergicHistoryNode created;
    created.owner.appendChild(
        created.owner.createProcessingInstruction("xml", platform::DeclarationData));
    created.record = created.owner.appendChild(
        created.owner.createNode(platform::XmlDocument::NODE_ELEMENT, "AllergicHistory", ""));
    created.record.appendElement("RegNr", regNr);
    created.record.appendElement("AllergicStatusHistory", std::to_string(allergic));
    created.record.appendElement("AllergicInfoHistory", reason);
    created.record.appendElement("AllergicInfoByHistory", signature);
    created.record.appendElement("AllergicInfoTimestampHistory", LocalTimestamp());
    return created;
}

void SaveGeneralInfo(const std::string &pnr, const std::string &generalNote,
                     const std::string &signature, const GeneralInfoMarks &marks) {
    const OpenPatientFile open(pnr);
    set(open.patient.asNode(), "//Patient/PatientData/GeneralInfoBy", signature);
    set(open.patient.asNode(), "//Patient/PatientData/GeneralInfoTimestamp", LocalTimestamp());
    // The guard stays where it always stood, though the assignment leaves the box alone.
    marks.setText1Tag("NoChange");
    set(open.patient.asNode(), "//Patient/PatientData/GeneralInfo", generalNote);
    marks.setText1Tag("");
    marks.setLabel3Caption(signedNow(signature));
    open.close();
}

void ReportNoteFailure(const MireloError &error) {
    platform::MsgBox(HeldPatientBox(error).value_or(platform::MsgBoxRequest{
        std::to_string(error.number()) + " " + error.description(), platform::MsgBoxButtons::OK,
        platform::MsgBoxIcon::None, "Mirelo"}));
}

void ReportReasonDialogFailure(const MireloError &error) {
    platform::MsgBox(HeldPatientBox(error).value_or(
        platform::MsgBoxRequest{"Fel uppstod: " + error.description(), platform::MsgBoxButtons::OK,
                                platform::MsgBoxIcon::Stop, "Mirelo"}));
}

} // namespace mirelo

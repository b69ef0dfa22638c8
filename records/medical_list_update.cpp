#include "records/medical_list_update.h"

#include "core/application_context.h"
#include "core/clock.h"
#include "core/conversions.h"
#include "platform/file_system.h"
#include "records/patient_file.h"

namespace mirelo {

platform::XmlDocument updateMedicalList(const std::string &id, const std::string &pnr) {
    const platform::FileEntry file = platform::GetFile(PatientFilePath(pnr));
    const PatientFileLock lock(pnr);
    platform::XmlDocument patient = ReadPatientFile(file.Path);
    const platform::XmlNode product = patient.selectSingleNode("//Product[ID = \"" + id + "\"]");

    const bool takingOut = CInt(product.selectSingleNode("Checked").text()) == 1;
    product.selectSingleNode("Checked").setText(takingOut ? "0" : "1");
    product.selectSingleNode(takingOut ? "TakenOutBy" : "InsertedBy").setText(session().gSignature);
    product.selectSingleNode(takingOut ? "TakenOutTimestamp" : "InsertedTimestamp")
        .setText(LocalTimestamp());

    WritePatientFile(patient, file.Path);
    return patient;
}

} // namespace mirelo

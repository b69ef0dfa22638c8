#include "records/patient_details.h"

#include "platform/file_system.h"
#include "records/patient_file.h"

namespace mirelo {

PatientDetails PatientDetailsOf(const platform::XmlDocument &patient) {
    const auto field = [&patient](const char *name) {
        return patient.selectSingleNode(std::string("//Patient/PatientData/") + name).text();
    };
    PatientDetails details;
    details.txtPnr = field("Pnr");
    details.txtName = field("FirstGivenName") + " " + field("FamilyName");
    details.txtAddress = field("StreetName");
    details.txtZipCity = field("PostalCode") + " " + field("City");
    return details;
}

PatientDetails ReadPatientDetails(const std::string &pnr) {
    return PatientDetailsOf(ReadPatientFile(platform::GetFile(PatientFilePath(pnr)).Path));
}

} // namespace mirelo

#include "records/patient_file.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "core/text_file.h"
#include "core/text_scrambling.h"
#include "platform/file_system.h"

#include <algorithm>

namespace mirelo {
namespace {

platform::XmlDocument parsePatientText(const std::string &text) {
    platform::XmlDocument patient;
    patient.setAsync(false);
    patient.setValidateOnParse(true);
    patient.loadXML(text);
    if (patient.parseError().errorCode != 0) {
        throw MireloError(errors::PatientFileDamaged,
                          withReason("Patientfil är skadad.", patient.parseError().reason));
    }
    return patient;
}

} // namespace

std::string PatientFilePath(const std::string &pnr) {
    const std::string exact = session().gDataPath + pnr + ".xml";
    return platform::FindFileIgnoringCase(exact).value_or(exact);
}

bool IsPatientFileName(const std::string &pnr) {
    const bool controlCharacter = std::any_of(pnr.begin(), pnr.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    });
    return !controlCharacter && pnr.find_first_of("/\\") == std::string::npos &&
           pnr.find("..") == std::string::npos;
}

std::string ReadPatientText(const std::string &path) {
    std::string text = UnscrambleText(ReadTextFile(path));
    text.erase(std::remove(text.begin(), text.end(), '\t'), text.end());
    return text;
}

platform::XmlDocument ReadPatientFile(const std::string &path) {
    return parsePatientText(ReadPatientText(path));
}

platform::XmlDocument ReadPatientFileKeepingTabs(const std::string &path) {
    return parsePatientText(UnscrambleText(ReadTextFile(path)));
}

void WritePatientFile(const platform::XmlDocument &patient, const std::string &path) {
    WriteTextFile(ScrambleText(patient.xml()), path);
}

} // namespace mirelo

#include "exchange/handover_document.h"

#include "build_config.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "platform/document_building.h"
#include "platform/message_box.h"

namespace mirelo {

std::optional<platform::XmlDocument> CreatePrescriptionXML(platform::XmlDocument *patient,
                                                           const std::string &pnr) {
    try {
        platform::XmlDocument handover;
        const platform::XmlNode root = platform::StartDocument(handover, "Patient");
        const platform::XmlNode prescriber = root.appendElement("PrescriberInfo");
        prescriber.appendElement("Username", session().gUsername);
        prescriber.appendElement("Password", session().gPassword);
        prescriber.appendElement("Path", InboxFolder());
        prescriber.appendElement("Version", build::version);
        if (patient == nullptr) {
            prescriber.appendElement("Pnr", pnr);
            return handover;
        }
        const platform::XmlNode patientData = patient->selectSingleNode("//PatientData");
        if (patientData.isNull()) {
            runtime::raise(runtime::ObjectNotSet);
        }
        root.appendChild(patientData);
        const platform::XmlNode medicalList = root.appendElement("MedicalList");
        for (const platform::XmlNode &product :
             patient->selectNodes("//Product[Checked = \"1\"]")) {
            medicalList.appendChild(product);
        }
        return handover;
    } catch (const MireloError &error) {
        platform::MsgBox("Kunde inte skapa förskrivningsfil: " + error.description(),
                         platform::MsgBoxButtons::OK, platform::MsgBoxIcon::Stop, "Mirelo");
        return std::nullopt;
    }
}

} // namespace mirelo

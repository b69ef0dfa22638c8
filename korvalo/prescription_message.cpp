#include "prescription_message.h"

#include "platform/document_building.h"
#include "platform/file_system.h"

#include <atomic>
#include <chrono>
#include <ctime>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

// The elements of a path below the parent, each made new; gives the last.
XmlNode appendPath(XmlNode parent, const std::string &path) {
    std::size_t start = 0;
    while (true) {
        const std::size_t slash = path.find('/', start);
        parent = parent.appendElement(path.substr(start, slash - start));
        if (slash == std::string::npos) {
            return parent;
        }
        start = slash + 1;
    }
}

void appendPatient(XmlNode message, const PatientDetails &patient) {
    const XmlNode matching = appendPath(message, "SubjectOfCare/PatientMatchingInfo");
    appendPath(matching, "PatientId").appendElement("IdValue", patient.pnr);
    const XmlNode name = appendPath(matching, "PersonNameDetails/StructuredPersonName");
    name.appendElement("FamilyName", patient.familyName);
    name.appendElement("FirstGivenName", patient.givenName);
    const XmlNode address = matching.appendElement("Address");
    const XmlNode structured = address.appendElement("StructuredAddress");
    structured.appendElement("StreetName", patient.streetName);
    structured.appendElement("City", patient.city);
    address.appendElement("PostalCode", patient.postalCode);
}

void appendItem(XmlNode set, const std::string &itemId, const PrescribedItem &item) {
    const CatalogueProduct &product = item.product;
    const XmlNode details = set.appendElement("PrescriptionItemDetails");
    details.appendElement("PrescriptionItemId", itemId);
    details.appendElement("RegNr", product.regNr);
    details.appendElement("Pnmn", product.name);
    details.appendElement("Tknm", product.company);
    details.appendElement("Berf", product.form);
    details.appendElement("Strnum", product.strengthNumber);
    details.appendElement("Strenh", product.strengthUnit);
    details.appendElement("Atccode", product.atcCode);
    details.appendElement("Forpstl", product.packageSize);

    const XmlNode prescribed = details.appendElement("PrescribedMedicinalProduct");
    const XmlNode medicinal = prescribed.appendElement("MedicinalProduct");
    medicinal.appendElement("ManufacturedProductId").appendElement("ProductId", product.vnr);
    medicinal.appendElement("Package").appendElement("NumberOfPackages", item.numberOfPackages);
    appendPath(prescribed, "InstructionsForUse/UnstructuredInstructionsForUse")
        .appendElement("UnstructuredDosageAdmin", item.dosage);
    const XmlNode repeat = prescribed.appendElement("RepeatDispensingInstructions");
    repeat.appendElement("DispensingRepeatNumber", item.repeats);
    const XmlNode interval = repeat.appendElement("TimeInterval");
    interval.appendElement("TimeValue", item.timeValue);
    interval.appendElement("TimeUnit", item.timeUnit);
    appendPath(details, "PaymentDetails/PaymentConditions")
        .appendElement("CareCoverageType", item.careCoverageType);
}

// Unique for the life of the service and, through the clock, across restarts.
std::string newSetId() {
    static std::atomic<unsigned> counter{0};
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) +
           "-" + std::to_string(++counter);
}

} // namespace

std::string IssueTimestampNow() {
    const std::time_t seconds = std::time(nullptr);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return text;
}

std::string WritePrescriptionMessage(const std::string &inbox, const Prescription &prescription) {
    XmlDocument document;
    const XmlNode root = mirelo::platform::StartDocument(document, "NewPrescriptionMessage");
    const XmlNode message = root.appendElement("PrescriptionMessage");
    appendPath(message, "GeneralPrescriptionMessageInformation/IdOfMessageByOriginator")
        .appendElement("IssueDateAndTimeOfMessage", prescription.issued);
    appendPath(message, "MessageSender/HealthcareAgent/HealthcareParty/HealthcarePerson")
        .appendElement("Name", prescription.prescriber);
    appendPatient(message, prescription.patient);

    const std::string setId = newSetId();
    const XmlNode set = message.appendElement("PrescriptionSet");
    set.appendElement("PrescriptionSetId", setId);
    for (std::size_t i = 0; i < prescription.items.size(); ++i) {
        appendItem(set, std::to_string(i + 1), prescription.items[i]);
    }

    const std::string folder = inbox.empty() || inbox.back() != '/' ? inbox + "/" : inbox;
    std::string path = folder + "recept-" + setId + ".xml";
    for (int copy = 2; mirelo::platform::FileExists(path); ++copy) {
        path = folder + "recept-" + setId + "-" + std::to_string(copy) + ".xml";
    }
    // The client skips names that don't end in xml: a message it finds is always whole.
    document.save(path + ".tmp");
    mirelo::platform::MoveFile(path + ".tmp", path);
    return path;
}

} // namespace korvalo

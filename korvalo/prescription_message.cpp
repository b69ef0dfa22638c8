#include "prescription_message.h"

#include "core/document_building.h"
#include "platform/file_system.h"

#include <atomic>
#include <chrono>
#include <ctime>

namespace korvalo {
namespace {

using mirelo::AppendElement;
using mirelo::AppendField;
using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

// The elements of a path below the parent, each made new; gives the last.
XmlNode appendPath(XmlDocument &document, XmlNode parent, const std::string &path) {
    std::size_t start = 0;
    while (true) {
        const std::size_t slash = path.find('/', start);
        parent = AppendElement(document, parent, path.substr(start, slash - start));
        if (slash == std::string::npos) {
            return parent;
        }
        start = slash + 1;
    }
}

void appendPatient(XmlDocument &document, XmlNode message, const PatientDetails &patient) {
    const XmlNode matching = appendPath(document, message, "SubjectOfCare/PatientMatchingInfo");
    AppendField(document, appendPath(document, matching, "PatientId"), "IdValue", patient.pnr);
    const XmlNode name = appendPath(document, matching, "PersonNameDetails/StructuredPersonName");
    AppendField(document, name, "FamilyName", patient.familyName);
    AppendField(document, name, "FirstGivenName", patient.givenName);
    const XmlNode address = AppendElement(document, matching, "Address");
    const XmlNode structured = AppendElement(document, address, "StructuredAddress");
    AppendField(document, structured, "StreetName", patient.streetName);
    AppendField(document, structured, "City", patient.city);
    AppendField(document, address, "PostalCode", patient.postalCode);
}

void appendItem(XmlDocument &document, XmlNode set, const std::string &itemId,
                const PrescribedItem &item) {
    const CatalogueProduct &product = item.product;
    const XmlNode details = AppendElement(document, set, "PrescriptionItemDetails");
    AppendField(document, details, "PrescriptionItemId", itemId);
    AppendField(document, details, "RegNr", product.regNr);
    AppendField(document, details, "Pnmn", product.name);
    AppendField(document, details, "Tknm", product.company);
    AppendField(document, details, "Berf", product.form);
    AppendField(document, details, "Strnum", product.strengthNumber);
    AppendField(document, details, "Strenh", product.strengthUnit);
    AppendField(document, details, "Atccode", product.atcCode);
    AppendField(document, details, "Forpstl", product.packageSize);

    const XmlNode prescribed = AppendElement(document, details, "PrescribedMedicinalProduct");
    const XmlNode medicinal = AppendElement(document, prescribed, "MedicinalProduct");
    AppendField(document, AppendElement(document, medicinal, "ManufacturedProductId"), "ProductId",
                product.vnr);
    AppendField(document, AppendElement(document, medicinal, "Package"), "NumberOfPackages",
                item.numberOfPackages);
    AppendField(
        document,
        appendPath(document, prescribed, "InstructionsForUse/UnstructuredInstructionsForUse"),
        "UnstructuredDosageAdmin", item.dosage);
    const XmlNode repeat = AppendElement(document, prescribed, "RepeatDispensingInstructions");
    AppendField(document, repeat, "DispensingRepeatNumber", item.repeats);
    const XmlNode interval = AppendElement(document, repeat, "TimeInterval");
    AppendField(document, interval, "TimeValue", item.timeValue);
    AppendField(document, interval, "TimeUnit", item.timeUnit);
    AppendField(document, appendPath(document, details, "PaymentDetails/PaymentConditions"),
                "CareCoverageType", item.careCoverageType);
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
    const XmlNode root = mirelo::StartDocument(document, "NewPrescriptionMessage");
    const XmlNode message = AppendElement(document, root, "PrescriptionMessage");
    AppendField(document,
                appendPath(document, message,
                           "GeneralPrescriptionMessageInformation/IdOfMessageByOriginator"),
                "IssueDateAndTimeOfMessage", prescription.issued);
    AppendField(document,
                appendPath(document, message,
                           "MessageSender/HealthcareAgent/HealthcareParty/HealthcarePerson"),
                "Name", prescription.prescriber);
    appendPatient(document, message, prescription.patient);

    const std::string setId = newSetId();
    const XmlNode set = AppendElement(document, message, "PrescriptionSet");
    AppendField(document, set, "PrescriptionSetId", setId);
    for (std::size_t i = 0; i < prescription.items.size(); ++i) {
        appendItem(document, set, std::to_string(i + 1), prescription.items[i]);
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

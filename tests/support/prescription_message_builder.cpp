#include "prescription_message_builder.h"

#include "patient_file_builder.h"
#include "test_environment.h"

#include <QString>

namespace mirelo::testing {
namespace {

std::string escaped(const std::string &text) {
    return QString::fromStdString(text).toHtmlEscaped().toStdString();
}

// Builds elements, leaving out those the test names.
struct Writer {
    const std::set<std::string> &omitted;

    std::string leaf(const std::string &name, const std::string &text) const {
        return wrap(name, escaped(text));
    }
    std::string wrap(const std::string &name, const std::string &inner) const {
        return omitted.contains(name) ? std::string()
                                      : "<" + name + ">" + inner + "</" + name + ">";
    }
};

std::string itemText(const MessageItem &item) {
    const Writer w{item.omitted};
    const std::string medicinalProduct =
        w.wrap("MedicinalProduct",
               w.wrap("ManufacturedProductId", w.leaf("ProductId", item.productId)) +
                   w.wrap("Package", w.leaf("NumberOfPackages", item.numberOfPackages)));
    const std::string instructions =
        w.wrap("InstructionsForUse", w.wrap("UnstructuredInstructionsForUse",
                                            w.leaf("UnstructuredDosageAdmin", item.dosage)));
    const std::string repeats =
        w.wrap("RepeatDispensingInstructions",
               w.leaf("DispensingRepeatNumber", item.repeats) +
                   w.wrap("TimeInterval",
                          w.leaf("TimeValue", item.timeValue) + w.leaf("TimeUnit", item.timeUnit)));
    return w.wrap(
        "PrescriptionItemDetails",
        w.leaf("PrescriptionItemId", item.itemId) + w.leaf("RegNr", item.regNr) +
            w.leaf("Pnmn", item.productName) + w.leaf("Tknm", item.companyName) +
            w.leaf("Berf", item.form) + w.leaf("Strnum", item.strengthNumber) +
            w.leaf("Strenh", item.strengthUnit) + w.leaf("Atccode", item.atcCode) +
            w.leaf("Forpstl", item.packageSize) +
            w.wrap("PrescribedMedicinalProduct", medicinalProduct + instructions + repeats) +
            w.wrap("PaymentDetails",
                   w.wrap("PaymentConditions", w.leaf("CareCoverageType", item.careCoverageType))));
}

} // namespace

std::string prescriptionMessageText(const PrescriptionMessage &message) {
    const Writer w{message.omitted};
    const std::string sender =
        w.wrap("MessageSender",
               w.wrap("HealthcareAgent",
                      w.wrap("HealthcareParty",
                             w.wrap("HealthcarePerson", w.leaf("Name", message.prescriber)))));
    const std::string information = w.wrap(
        "GeneralPrescriptionMessageInformation",
        w.wrap("IdOfMessageByOriginator", w.leaf("IssueDateAndTimeOfMessage", message.issued)));
    const std::string subject =
        w.wrap("SubjectOfCare",
               w.wrap("PatientMatchingInfo",
                      w.wrap("PatientId", w.leaf("IdValue", message.pnr)) +
                          w.wrap("PersonNameDetails",
                                 w.wrap("StructuredPersonName",
                                        w.leaf("FamilyName", message.familyName) +
                                            w.leaf("FirstGivenName", message.givenName))) +
                          w.wrap("Address",
                                 w.wrap("StructuredAddress", w.leaf("StreetName", message.street) +
                                                                 w.leaf("City", message.city)) +
                                     w.leaf("PostalCode", message.postalCode))));
    std::string items;
    for (const MessageItem &item : message.items) {
        items += itemText(item);
    }
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n"
           "<NewPrescriptionMessage><PrescriptionMessage>" +
           sender + information + subject + "<Prescription>" +
           w.leaf("PrescriptionSetId", message.setId) + items +
           "</Prescription></PrescriptionMessage></NewPrescriptionMessage>\r\n";
}

void writePrescriptionMessage(const std::string &path, const PrescriptionMessage &message) {
    writeFinishedMessage(path, utf8ToLatin1(prescriptionMessageText(message)));
}

} // namespace mirelo::testing

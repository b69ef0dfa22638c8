#include "intake/product_number_check.h"

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "intake/message_paths.h"
#include "platform/document_building.h"
#include "platform/http_request.h"

namespace mirelo {
namespace {

std::string itemText(const platform::XmlNode &item, const char *query) {
    return item.selectSingleNode(query).text();
}

} // namespace

platform::XmlDocument BuildVnrXML(const platform::XmlDocument &message) {
    platform::XmlDocument document;
    const platform::XmlNode root = platform::StartDocument(document, "VnrCheck");

    for (const platform::XmlNode &item : message.selectNodes("//PrescriptionItemDetails")) {
        const platform::XmlNode product = root.appendElement("Product");
        const auto field = [&](const char *name, const std::string &text) {
            product.appendElement(name, text);
        };
        field("ID", message.selectSingleNode("//PrescriptionSetId").text() + "_" +
                        itemText(item, "PrescriptionItemId"));
        field("Vnr", itemText(item, "PrescribedMedicinalProduct/MedicinalProduct/"
                                    "ManufacturedProductId/ProductId"));
        for (const char *name : {"RegNr", "ProductName", "CompanyName", "Form", "Str", "ATCcode",
                                 "SubstitutionType"}) {
            field(name, "");
        }
        field("CareCoverageType",
              itemText(item, "PaymentDetails/PaymentConditions/CareCoverageType"));
        field(
            "NumberOfPackages",
            itemText(item, "PrescribedMedicinalProduct/MedicinalProduct/Package/NumberOfPackages"));
        field("PackageSize", "");
        field("UnstructuredDosageAdmin",
              itemText(item, "PrescribedMedicinalProduct/InstructionsForUse/"
                             "UnstructuredInstructionsForUse/UnstructuredDosageAdmin"));
        field("DispensingRepeatNumber",
              itemText(item, "PrescribedMedicinalProduct/RepeatDispensingInstructions/"
                             "DispensingRepeatNumber"));
        field("TimeValue", itemText(item, "PrescribedMedicinalProduct/RepeatDispensingInstructions/"
                                          "TimeInterval/TimeValue"));
        field("TimeUnit", itemText(item, "PrescribedMedicinalProduct/RepeatDispensingInstructions/"
                                         "TimeInterval/TimeUnit"));
        field("PrescribedBy", message.selectSingleNode(message_paths::PrescriberName).text());
        field("PrescribedTimestamp",
              message.selectSingleNode(message_paths::IssueTimestamp).text());
        field("Checked", "1");
        for (const char *name :
             {"ExtendedMedicalInfo", "ExtendedMedicalInfoBy", "ExtendedMedicalInfoTimestamp"}) {
            field(name, "");
        }
        field("InsertedBy", message.selectSingleNode(message_paths::PrescriberName).text());
        field("InsertedTimestamp", message.selectSingleNode(message_paths::IssueTimestamp).text());
        field("TakenOutBy", "");
        field("TakenOutTimestamp", "");
        field("Allergic", "0");
        field("AllergicHistory", "0");
    }
    return document;
}

platform::XmlDocument PostVnrCheck(const platform::XmlDocument &message) {
    platform::HttpRequest request;
    // The request document replaces the one the exchange began with, so the answer is parsed
    // with a document's default settings.
    platform::XmlDocument document = BuildVnrXML(message);

    request.open("POST", session().gServer + "/mirelo/vnr.asp", false);
    request.send(document.xml());
    document.load(request.responseStream());
    if (document.parseError().errorCode != 0) {
        // The reason of an unreadable answer is asked of an object that was never set, so
        // the run time's failure is what goes up, not the check's own number.
        runtime::raise(runtime::ObjectNotSet);
    }
    return document;
}

} // namespace mirelo

#include "intake/product_record.h"

#include "core/clock.h"
#include "core/conversions.h"
#include "core/document_building.h"
#include "intake/message_paths.h"

#include <optional>
#include <string>
#include <string_view>

namespace mirelo {
namespace {

constexpr const char *Dosage = "PrescribedMedicinalProduct/InstructionsForUse/"
                               "UnstructuredInstructionsForUse/UnstructuredDosageAdmin";
constexpr const char *Repeats = "PrescribedMedicinalProduct/RepeatDispensingInstructions/";

// An item's fields are read along its children rather than by a query each: with thousands
// of items in one message, the queries cost more than building the products.
std::string textAt(const platform::XmlNode &item, std::string_view path) {
    return item.firstElementAt(path).text();
}

// An unregistered item gets a number no other product shares, so that it is never merged with
// anything; two of them built within the same second do share it.
std::string registeredNumber(const platform::XmlNode &item) {
    const std::string regNr = textAt(item, "RegNr");
    if (!regNr.empty()) {
        return regNr;
    }
    return Now().toString(QStringLiteral("yyyyMMddHHmmss")).toStdString();
}

std::string dosageText(const platform::XmlNode &item) {
    const platform::XmlNode dosage = item.firstElementAt(Dosage);
    return dosage ? dosage.text() : std::string();
}

// What every product of a message repeats, looked up in the whole message once, at the point
// where the first product needs it, so that a message lacking it fails there as before.
class MessageWideText {
  public:
    explicit MessageWideText(const platform::XmlNode &message) : message_(message) {}

    const std::string &setId() { return lookUp(setId_, "//PrescriptionSetId"); }
    const std::string &prescriber() { return lookUp(prescriber_, message_paths::PrescriberName); }
    const std::string &issued() { return lookUp(issued_, message_paths::IssueTimestamp); }

  private:
    const std::string &lookUp(std::optional<std::string> &text, const char *query) {
        if (!text) {
            text = message_.firstElementAt(query).text();
        }
        return *text;
    }

    platform::XmlNode message_;
    std::optional<std::string> setId_;
    std::optional<std::string> prescriber_;
    std::optional<std::string> issued_;
};

void appendProduct(const platform::XmlNode &root, MessageWideText &message,
                   const platform::XmlNode &item) {
    const platform::XmlNode product = root.appendElement("Product");
    const auto field = [&](const char *name, const std::string &text) {
        product.appendElement(name, text);
    };
    field("ID", message.setId() + "_" + textAt(item, "PrescriptionItemId"));
    field("Vnr",
          textAt(item,
                 "PrescribedMedicinalProduct/MedicinalProduct/ManufacturedProductId/ProductId"));
    field("RegNr", registeredNumber(item));
    field("ProductName", textAt(item, "Pnmn"));
    field("CompanyName", textAt(item, "Tknm"));
    field("Form", textAt(item, "Berf"));
    field("Str", textAt(item, "Strnum") + " " + textAt(item, "Strenh"));
    field("ATCcode", textAt(item, "Atccode"));
    field("SubstitutionType", "");
    field("CareCoverageType", textAt(item, "PaymentDetails/PaymentConditions/CareCoverageType"));
    field("NumberOfPackages",
          textAt(item, "PrescribedMedicinalProduct/MedicinalProduct/Package/NumberOfPackages"));
    field("PackageSize", textAt(item, "Forpstl"));
    field("UnstructuredDosageAdmin", dosageText(item));
    const std::string repeats = textAt(item, std::string(Repeats) + "DispensingRepeatNumber");
    field("DispensingRepeatNumber", repeats);
    // The interval means something only for a prescription that may be dispensed again.
    if (CDbl(repeats) > 1) {
        field("TimeValue", textAt(item, std::string(Repeats) + "TimeInterval/TimeValue"));
        field("TimeUnit", textAt(item, std::string(Repeats) + "TimeInterval/TimeUnit"));
    }
    field("PrescribedBy", message.prescriber());
    field("PrescribedTimestamp", message.issued());
    field("Checked", "1");
    field("ExtendedMedicalInfo", "");
    field("ExtendedMedicalInfoBy", "");
    field("ExtendedMedicalInfoTimestamp", "");
    // The prescriber put the medication in, at the moment of the prescription; not the local
    // user at the moment of intake.
    field("InsertedBy", message.prescriber());
    field("InsertedTimestamp", message.issued());
    field("TakenOutBy", "");
    field("TakenOutTimestamp", "");
    field("Allergic", "0");
    field("AllergicHistory", "0");
}

} // namespace

void AppendNefProducts(const platform::XmlDocument &message, const platform::XmlNode &root) {
    MessageWideText messageWide(message.asNode());
    for (const platform::XmlNode &item : message.elementsAt("//PrescriptionItemDetails")) {
        appendProduct(root, messageWide, item);
    }
}

platform::XmlDocument BuildNefXML(const platform::XmlDocument &message) {
    platform::XmlDocument products;
    AppendNefProducts(message, StartDocument(products, "VnrCheck"));
    return products;
}

} // namespace mirelo

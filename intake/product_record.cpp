#include "intake/product_record.h"

#include "core/clock.h"
#include "core/conversions.h"
#include "intake/message_bounds.h"
#include "intake/message_paths.h"
#include "platform/document_building.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mirelo {
namespace {

constexpr const char *Dosage = "PrescribedMedicinalProduct/InstructionsForUse/"
                               "UnstructuredInstructionsForUse/UnstructuredDosageAdmin";
constexpr const char *RepeatNumber =
    "PrescribedMedicinalProduct/RepeatDispensingInstructions/DispensingRepeatNumber";
constexpr const char *IntervalValue =
    "PrescribedMedicinalProduct/RepeatDispensingInstructions/TimeInterval/TimeValue";
constexpr const char *IntervalUnit =
    "PrescribedMedicinalProduct/RepeatDispensingInstructions/TimeInterval/TimeUnit";

// An item's fields are read along its children rather than by a query each: with thousands
// of items in one message, the queries cost more than building the products.
std::string textAt(const platform::XmlNode &item, std::string_view path) {
    return FieldText(item.firstElementAt(path));
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
    return dosage ? FieldText(dosage) : std::string();
}

// What every product of a message repeats, looked up in the whole message once, at the point
// where the first product needs it, so that a message lacking it fails there as before.
class MessageWideText {
  public:
    explicit MessageWideText(const platform::XmlNode &message) : message_(message) {}

    const std::string &setId() { return lookUp(setId_, "//PrescriptionSetId"); }
    const std::string &prescriber() { return lookUp(prescriber_, message_paths::PrescriberName); }
    const std::string &issued() { return lookUp(issued_, message_paths::IssueTimestamp); }

    // What each product copies of the message as a whole: the set id in its ID, the prescriber
    // and the moment of issue twice.
    std::uintmax_t repeatedBytes() {
        return setId().size() + 2 * (prescriber().size() + issued().size());
    }

  private:
    const std::string &lookUp(std::optional<std::string> &text, const char *query) {
        if (!text) {
            text = FieldText(message_.firstElementAt(query));
        }
        return *text;
    }

    platform::XmlNode message_;
    std::optional<std::string> setId_;
    std::optional<std::string> prescriber_;
    std::optional<std::string> issued_;
};

// What a product takes from its own item, read before any product is made.
struct ItemTexts {
    std::string id;
    std::string vnr;
    std::string regNr;
    std::string productName;
    std::string companyName;
    std::string form;
    std::string strength;
    std::string atcCode;
    std::string careCoverageType;
    std::string numberOfPackages;
    std::string packageSize;
    std::string dosage;
    std::string repeats;
    // Only for a prescription that may be dispensed again does the interval mean something.
    std::optional<std::pair<std::string, std::string>> interval;
};

// Reads an item's texts in the order of the product's elements, the message-wide ones at their
// place, so that the first text a message lacks fails it as ever.
ItemTexts readItem(MessageWideText &message, const platform::XmlNode &item) {
    ItemTexts texts;
    texts.id = message.setId() + "_" + textAt(item, "PrescriptionItemId");
    texts.vnr =
        textAt(item, "PrescribedMedicinalProduct/MedicinalProduct/ManufacturedProductId/ProductId");
    texts.regNr = registeredNumber(item);
    texts.productName = textAt(item, "Pnmn");
    texts.companyName = textAt(item, "Tknm");
    texts.form = textAt(item, "Berf");
    texts.strength = textAt(item, "Strnum") + " " + textAt(item, "Strenh");
    texts.atcCode = textAt(item, "Atccode");
    texts.careCoverageType = textAt(item, "PaymentDetails/PaymentConditions/CareCoverageType");
    texts.numberOfPackages =
        textAt(item, "PrescribedMedicinalProduct/MedicinalProduct/Package/NumberOfPackages");
    texts.packageSize = textAt(item, "Forpstl");
    texts.dosage = dosageText(item);
    texts.repeats = textAt(item, RepeatNumber);
    if (CDbl(texts.repeats) > 1) {
        texts.interval.emplace(textAt(item, IntervalValue), textAt(item, IntervalUnit));
    }
    // Where the first product needs them, a message lacking them fails.
    message.prescriber();
    message.issued();
    return texts;
}

void appendFields(const platform::XmlNode &product, MessageWideText &message,
                  const ItemTexts &texts) {
    const auto field = [&product](const char *name, const std::string &text) {
        product.appendElement(name, text);
    };
    field("ID", texts.id);
    field("Vnr", texts.vnr);
    field("RegNr", texts.regNr);
    field("ProductName", texts.productName);
    field("CompanyName", texts.companyName);
    field("Form", texts.form);
    field("Str", texts.strength);
    field("ATCcode", texts.atcCode);
    field("SubstitutionType", "");
    field("CareCoverageType", texts.careCoverageType);
    field("NumberOfPackages", texts.numberOfPackages);
    field("PackageSize", texts.packageSize);
    field("UnstructuredDosageAdmin", texts.dosage);
    field("DispensingRepeatNumber", texts.repeats);
    if (texts.interval) {
        field("TimeValue", texts.interval->first);
        field("TimeUnit", texts.interval->second);
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

std::vector<std::string> AppendNefProducts(const platform::XmlDocument &message,
                                           const platform::XmlNode &root,
                                           std::optional<std::uintmax_t> messageBytes) {
    MessageWideText messageWide(message.asNode());
    const std::vector<platform::XmlNode> itemElements =
        message.elementsAt("//PrescriptionItemDetails");
    std::vector<ItemTexts> items;
    for (const platform::XmlNode &item : itemElements) {
        items.push_back(readItem(messageWide, item));
        // A message that names its prescriber at length and lists many items would have every
        // product copy the name: it is refused before the copies are made.
        if (messageBytes && items.size() == 1) {
            CheckGrowth(messageWide.repeatedBytes() * itemElements.size(), *messageBytes);
        }
    }
    // Every item is read, and may fail the message, in the message's order before any product
    // is made. They are made last to first, each placed before the one made just before it:
    // the patient's list takes them in the same way, each first, so that its products lie in
    // memory in the order in which a large list is then written out and freed.
    platform::XmlNode madeLater;
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        madeLater = root.insertElementBefore("Product", madeLater);
        appendFields(madeLater, messageWide, *item);
    }
    std::vector<std::string> ids;
    ids.reserve(items.size());
    for (ItemTexts &item : items) {
        ids.push_back(std::move(item.id));
    }
    return ids;
}

platform::XmlDocument BuildNefXML(const platform::XmlDocument &message) {
    platform::XmlDocument products;
    AppendNefProducts(message, platform::StartDocument(products, "VnrCheck"));
    return products;
}

} // namespace mirelo

#include "intake/medication_list_merge.h"

#include "core/conversions.h"
#include "core/mirelo_error.h"
#include "intake/product_record.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace mirelo {
namespace {

// What the new product inherits from, and does to, one older product of the same RegNr.
// Retiring it records no person: nobody took it out.
void retireOlderProduct(const platform::XmlNode &older, const platform::XmlNode &product) {
    const platform::XmlNode checked = older.firstElementAt("Checked");
    if (CInt(checked.text()) == 1) {
        checked.setText("0");
    }
    // Once a product has an allergy record, every later prescription of it shows so.
    if (CInt(older.firstElementAt("AllergicHistory").text()) == 1) {
        product.firstElementAt("AllergicHistory").setText("1");
    }
    const std::string note = older.firstElementAt("ExtendedMedicalInfo").text();
    const std::string allergic = older.firstElementAt("Allergic").text();
    const bool warned = CInt(allergic) != 0;
    if (!note.empty() || warned) {
        product.firstElementAt("ExtendedMedicalInfo").setText(note);
        product.firstElementAt("Allergic").setText(allergic);
    }
}

std::string regNrOf(const platform::XmlNode &product) {
    return product.firstElementAt("RegNr").text();
}

// A file as the program writes it keeps its products side by side. A hand-edited one may hold
// a product, or the MedicalList, inside another product; there retiring a product can change
// another's RegNr or take products out of the file, so every item has to look at the whole
// file again.
bool productsStandApart(const std::vector<platform::XmlNode> &products,
                        const std::vector<platform::XmlNode> &medicalLists) {
    const auto insideAProduct = [](const platform::XmlNode &node) {
        return node.hasAncestorElement("Product");
    };
    return std::none_of(products.begin(), products.end(), insideAProduct) &&
           std::none_of(medicalLists.begin(), medicalLists.end(), insideAProduct);
}

// The products of one RegNr that were in the file before the message, in document order, and
// the one of them that this message took in last.
struct ProductsOfRegNr {
    std::vector<platform::XmlNode> inFile;
    platform::XmlNode lastTakenIn;
};

// Takes the items of one message into a file whose products stand apart, each older product
// read once however many items share its RegNr. The first item reads every product's RegNr, in
// the same order and with the same failures as a single merge, and keeps the products by RegNr.
// The first item of a RegNr retires the file's products of it; a later one needs only the
// product taken in before it: the others are retired already, and that one carries the history
// mark, note and warning that they would hand on. With products apart, nothing a merge changes
// moves a product or alters a RegNr, so what is kept stays true.
class MessageMerge {
  public:
    MessageMerge(platform::XmlDocument &patient, std::vector<platform::XmlNode> olderProducts,
                 std::vector<platform::XmlNode> medicalLists)
        : patient_(patient), olderProducts_(std::move(olderProducts)),
          medicalLists_(std::move(medicalLists)) {}

    void takeIn(const platform::XmlNode &product) {
        if (medicalList_.isNull()) {
            takeInFirst(product);
            return;
        }
        const std::string regNr = regNrOf(product);
        if (const auto found = byRegNr_.find(regNr); found != byRegNr_.end()) {
            const ProductsOfRegNr &older = found->second;
            if (older.lastTakenIn) {
                retireOlderProduct(older.lastTakenIn, product);
            } else {
                for (const platform::XmlNode &each : older.inFile) {
                    retireOlderProduct(each, product);
                }
            }
        }
        placeFirst(product, regNr);
    }

  private:
    void takeInFirst(const platform::XmlNode &product) {
        const bool listIsNew = medicalLists_.empty();
        medicalList_ =
            listIsNew ? patient_.createNode(platform::XmlDocument::NODE_ELEMENT, "MedicalList", "")
                      : medicalLists_.front();

        const std::string regNr = regNrOf(product);
        for (const platform::XmlNode &older : olderProducts_) {
            const std::string olderRegNr = regNrOf(older);
            if (olderRegNr.empty()) {
                continue;
            }
            byRegNr_[olderRegNr].inFile.push_back(older);
            if (olderRegNr == regNr) {
                retireOlderProduct(older, product);
            }
        }

        const std::vector<platform::XmlNode> entries = medicalList_.childNodes();
        firstEntry_ = entries.empty() ? platform::XmlNode() : entries.front();
        placeFirst(product, regNr);
        if (listIsNew) {
            patient_.documentElement().appendChild(medicalList_);
        }
    }

    // An empty RegNr is never matched, so a product without one isn't kept.
    void placeFirst(const platform::XmlNode &product, const std::string &regNr) {
        firstEntry_ = medicalList_.insertBefore(product, firstEntry_);
        if (!regNr.empty()) {
            byRegNr_[regNr].lastTakenIn = firstEntry_;
        }
    }

    platform::XmlDocument &patient_;
    const std::vector<platform::XmlNode> olderProducts_;
    const std::vector<platform::XmlNode> medicalLists_;
    platform::XmlNode medicalList_;
    platform::XmlNode firstEntry_;
    std::unordered_map<std::string, ProductsOfRegNr> byRegNr_;
};

// Whether a product stands where the physician's list is: in the MedicalList that is a child
// of the document element Patient. Products side by side share their parent, which is looked
// at once for all of them.
class InTheList {
  public:
    explicit InTheList(const platform::XmlDocument &patient)
        : patientElement_(patient.documentElement()) {}

    bool operator()(const platform::XmlNode &product) {
        const platform::XmlNode parent = product.parentNode();
        if (parent != lastParent_) {
            lastParent_ = parent;
            lastIsTheList_ = parent && parent.parentNode() == patientElement_ &&
                             parent.nodeName() == "MedicalList" &&
                             patientElement_.nodeName() == "Patient";
        }
        return lastIsTheList_;
    }

  private:
    const platform::XmlNode patientElement_;
    platform::XmlNode lastParent_;
    bool lastIsTheList_ = false;
};

// The IDs of the products in the list. A message that was taken in before, and not deleted
// after its write, finds its own products here.
std::unordered_set<std::string> idsInTheList(const std::vector<platform::XmlNode> &products,
                                             InTheList &inTheList) {
    std::unordered_set<std::string> ids;
    for (const platform::XmlNode &product : products) {
        const platform::XmlNode id = product.firstElementAt("ID");
        if (id && inTheList(product)) {
            ids.insert(id.text());
        }
    }
    return ids;
}

} // namespace

bool TakeInMessageItems(const platform::XmlDocument &message, platform::XmlDocument &patient,
                        std::optional<std::uintmax_t> messageBytes) {
    // The products are made in the patient's own document, under an element outside its tree:
    // taking them in then moves each without copying its names or handing it to another
    // document, which a message of thousands of items would feel.
    const platform::XmlNode products =
        patient.createNode(platform::XmlDocument::NODE_ELEMENT, "VnrCheck", "");
    const std::vector<std::string> ids = AppendNefProducts(message, products, messageBytes);
    if (ids.empty()) {
        return false;
    }
    std::vector<std::vector<platform::XmlNode>> found =
        patient.elementsAnywhere({"Product", "MedicalList"});
    std::vector<platform::XmlNode> &olderProducts = found[0];
    std::vector<platform::XmlNode> &medicalLists = found[1];
    InTheList inTheList(patient);
    const std::unordered_set<std::string> listed = idsInTheList(olderProducts, inTheList);
    const std::vector<platform::XmlNode> made = products.elementsAt("Product");
    std::vector<platform::XmlNode> newProducts;
    newProducts.reserve(made.size());
    for (std::size_t k = 0; k < made.size(); ++k) {
        if (!listed.contains(ids[k])) {
            newProducts.push_back(made[k]);
        }
    }
    if (!productsStandApart(olderProducts, medicalLists)) {
        for (const platform::XmlNode &product : newProducts) {
            MergeProductIntoMedicalList(patient, product);
        }
    } else {
        MessageMerge merge(patient, std::move(olderProducts), std::move(medicalLists));
        for (const platform::XmlNode &product : newProducts) {
            merge.takeIn(product);
        }
    }
    // A hand-edited file may keep its first MedicalList elsewhere, even inside a product that
    // the merge then rewrites: a prescription that didn't land in the list is not taken in.
    InTheList landed(patient);
    for (const platform::XmlNode &product : newProducts) {
        if (!landed(product)) {
            throw MireloError(errors::PatientFileDamaged,
                              withReason("Patientfil är skadad.",
                                         "Läkemedelslistan står inte direkt under Patient."));
        }
    }
    return !newProducts.empty();
}

void MergeProductIntoMedicalList(platform::XmlDocument &patient, platform::XmlNode product) {
    const bool listIsNew = patient.elementsAt("//MedicalList").empty();
    const platform::XmlNode medicalList =
        listIsNew ? patient.createNode(platform::XmlDocument::NODE_ELEMENT, "MedicalList", "")
                  : patient.firstElementAt("//MedicalList");

    const std::string regNr = regNrOf(product);
    for (const platform::XmlNode &older : patient.elementsAt("//Product")) {
        const std::string olderRegNr = regNrOf(older);
        if (olderRegNr.empty() || olderRegNr != regNr) {
            continue;
        }
        retireOlderProduct(older, product);
    }

    const std::vector<platform::XmlNode> entries = medicalList.childNodes();
    medicalList.insertBefore(product, entries.empty() ? platform::XmlNode() : entries.front());
    if (listIsNew) {
        patient.documentElement().appendChild(medicalList);
    }
}

} // namespace mirelo

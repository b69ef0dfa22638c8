#include "intake/medication_list_merge.h"

#include "core/conversions.h"
#include "core/mirelo_error.h"
#include "intake/product_record.h"

namespace mirelo {
namespace {

// What the new product inherits from, and does to, one older product of the same RegNr.
// Retiring it records no person: nobody took it out.
void retireOlderProduct(const platform::XmlNode &older, const platform::XmlNode &product) {
    const platform::XmlNode checked = older.selectSingleNode("Checked");
    if (CInt(checked.text()) == 1) {
        checked.setText("0");
    }
    // Once a product has an allergy record, every later prescription of it shows so.
    if (CInt(older.selectSingleNode("AllergicHistory").text()) == 1) {
        product.selectSingleNode("AllergicHistory").setText("1");
    }
    const std::string note = older.selectSingleNode("ExtendedMedicalInfo").text();
    const std::string allergic = older.selectSingleNode("Allergic").text();
    const bool warned = CInt(allergic) != 0;
    if (!note.empty() || warned) {
        product.selectSingleNode("ExtendedMedicalInfo").setText(note);
        product.selectSingleNode("Allergic").setText(allergic);
    }
}

} // namespace

void TakeInMessageItems(const platform::XmlDocument &message, platform::XmlDocument &patient) {
    const platform::XmlDocument products = BuildNefXML(message);
    // A document built in memory doesn't fail to parse; the check stands as it always has.
    if (products.parseError().errorCode != 0) {
        throw MireloError(errors::PatientFileDamaged,
                          withReason("Patientfil är skadad.", products.parseError().reason));
    }
    for (const platform::XmlNode &product : products.selectNodes("//Product")) {
        MergeProductIntoMedicalList(patient, product);
    }
}

void MergeProductIntoMedicalList(platform::XmlDocument &patient, platform::XmlNode product) {
    const bool listIsNew = patient.selectNodes("//MedicalList").empty();
    const platform::XmlNode medicalList =
        listIsNew ? patient.createNode(platform::XmlDocument::NODE_ELEMENT, "MedicalList", "")
                  : patient.selectSingleNode("//MedicalList");

    const std::string regNr = product.selectSingleNode("RegNr").text();
    for (const platform::XmlNode &older : patient.selectNodes("//Product")) {
        const std::string olderRegNr = older.selectSingleNode("RegNr").text();
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

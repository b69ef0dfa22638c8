#include "patient_file_builder.h"

#include "core/application_context.h"
#include "test_environment.h"

#include <utility>

namespace mirelo::testing {
namespace {

std::string element(const std::string &name, const std::string &text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

std::string productText(const ProductFields &product) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> fields = {
        {"ID", product.id},
        {"Vnr", "012345"},
        {"RegNr", product.regNr},
        {"ProductName", product.productName},
        {"CompanyName", product.companyName},
        {"Form", product.form},
        {"Str", product.strength},
        {"ATCcode", product.atcCode},
        {"SubstitutionType", ""},
        {"CareCoverageType", "HK"},
        {"NumberOfPackages", product.numberOfPackages},
        {"PackageSize", product.packageSize},
        {"UnstructuredDosageAdmin", product.dosage},
        {"DispensingRepeatNumber", product.repeats},
        {"PrescribedBy", product.prescribedBy},
        {"PrescribedTimestamp", product.prescribedTimestamp},
        {"Checked", product.checked},
        {"ExtendedMedicalInfo", product.note},
        {"ExtendedMedicalInfoBy", product.noteBy},
        {"ExtendedMedicalInfoTimestamp", product.noteTimestamp},
        {"InsertedBy", product.insertedBy},
        {"InsertedTimestamp", product.insertedTimestamp},
        {"TakenOutBy", product.takenOutBy},
        {"TakenOutTimestamp", product.takenOutTimestamp},
        {"Allergic", product.allergic},
        {"AllergicHistory", product.allergicHistory},
    };
    std::string text = "<Product>";
    for (const auto &[name, value] : fields) {
        if (value && !product.omitted.contains(name)) {
            text += element(name, *value);
        }
    }
    return text + "</Product>";
}

} // namespace

std::string patientText(const std::string &pnr, const std::string &familyName,
                        const std::string &givenName, const std::vector<ProductFields> &products) {
    std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Patient><PatientData>" +
                       element("FamilyName", familyName) + element("FirstGivenName", givenName) +
                       element("Pnr", pnr) + element("StreetName", "Storgatan 1") +
                       element("PostalCode", "111 22") + element("City", "Stockholm") +
                       element("GeneralInfo", "") + element("GeneralInfoBy", "") +
                       element("GeneralInfoTimestamp", "") + "</PatientData>";
    if (!products.empty()) {
        text += "<MedicalList>";
        for (const ProductFields &product : products) {
            text += productText(product);
        }
        text += "</MedicalList>";
    }
    return text + "</Patient>\r\n";
}

void storePatientFile(const std::string &fileName, const std::string &utf8Text) {
    writeBytes(session().gDataPath + fileName, scrambleBytes(utf8ToLatin1(utf8Text)));
}

void storePatient(const std::string &pnr, const std::vector<ProductFields> &products,
                  const std::string &familyName, const std::string &givenName) {
    storePatientFile(pnr + ".xml", patientText(pnr, familyName, givenName, products));
}

std::string utf8ToLatin1(const std::string &utf8) {
    std::string latin1;
    for (size_t i = 0; i < utf8.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            latin1 += static_cast<char>(c);
        } else {
            // Two-byte sequences only: the letters of the Western code page's upper half.
            latin1 += static_cast<char>(((c & 0x1F) << 6) |
                                        (static_cast<unsigned char>(utf8[++i]) & 0x3F));
        }
    }
    return latin1;
}

} // namespace mirelo::testing

#include "patient_file_builder.h"

#include "core/application_context.h"
#include "test_environment.h"

#include <QString>
#include <gtest/gtest.h>
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
                        const std::string &givenName, const std::vector<ProductFields> &products,
                        const std::array<std::string, 3> &generalNote, const std::string &history) {
    std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<Patient><PatientData>" +
                       element("FamilyName", familyName) + element("FirstGivenName", givenName) +
                       element("Pnr", pnr) + element("StreetName", "Storgatan 1") +
                       element("PostalCode", "111 22") + element("City", "Stockholm") +
                       element("GeneralInfo", generalNote[0]) +
                       element("GeneralInfoBy", generalNote[1]) +
                       element("GeneralInfoTimestamp", generalNote[2]) + "</PatientData>";
    if (!products.empty()) {
        text += "<MedicalList>";
        for (const ProductFields &product : products) {
            text += productText(product);
        }
        text += "</MedicalList>";
    }
    return text + history + "</Patient>\r\n";
}

std::string historyRecord(const std::string &regNr, const std::string &status,
                          const std::string &reason, const std::string &by,
                          const std::string &time) {
    return "<AllergicHistory>" + element("RegNr", regNr) +
           element("AllergicStatusHistory", status) + element("AllergicInfoHistory", reason) +
           element("AllergicInfoByHistory", by) + element("AllergicInfoTimestampHistory", time) +
           "</AllergicHistory>";
}

std::string storedBytes(const std::string &utf8Text) {
    return scrambleBytes(utf8ToLatin1(parsedXml(utf8Text).xml()));
}

void storePatientFile(const std::string &fileName, const std::string &utf8Text) {
    writeBytes(session().gDataPath + fileName, scrambleBytes(utf8ToLatin1(utf8Text)));
}

void storePatient(const std::string &pnr, const std::vector<ProductFields> &products,
                  const std::string &familyName, const std::string &givenName) {
    storePatientFile(pnr + ".xml", patientText(pnr, familyName, givenName, products));
}

std::string utf8ToLatin1(const std::string &utf8) {
    return QString::fromStdString(utf8).toLatin1().toStdString();
}

platform::XmlDocument parsedXml(const std::string &text) {
    platform::XmlDocument document;
    EXPECT_TRUE(document.loadXML(text)) << document.parseError().reason;
    return document;
}

platform::XmlDocument readStoredPatient(const std::string &path) {
    SCOPED_TRACE(path);
    return parsedXml(latin1ToUtf8(unscrambleBytes(readBytes(path))));
}

std::string texts(const platform::XmlDocument &document, const std::string &query, bool named) {
    std::string texts;
    for (const platform::XmlNode &node : document.selectNodes(query)) {
        texts += (named ? node.nodeName() + "=" : "") + node.text() + "|";
    }
    return texts;
}

} // namespace mirelo::testing

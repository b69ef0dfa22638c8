#include "stored_patient_reading.h"

#include "test_environment.h"

#include <gtest/gtest.h>

namespace mirelo::testing {

platform::XmlDocument readStoredPatient(const std::string &path) {
    platform::XmlDocument patient;
    patient.loadXML(latin1ToUtf8(unscrambleBytes(readBytes(path))));
    EXPECT_EQ(patient.parseError().errorCode, 0) << path << ": " << patient.parseError().reason;
    return patient;
}

Fields childFields(const platform::XmlNode &node) {
    Fields fields;
    for (const platform::XmlNode &child : node.childNodes()) {
        fields.emplace_back(child.nodeName(), child.text());
    }
    return fields;
}

Fields storedFields(const std::string &path, const std::string &query) {
    return childFields(readStoredPatient(path).selectSingleNode(query));
}

} // namespace mirelo::testing

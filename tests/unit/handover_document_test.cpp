#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "exchange/handover_document.h"
#include "patient_file_builder.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

class HandoverDocumentTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        session().gUsername = "demo";
        session().gPassword = "hemligt <&> lösen";
    }

    support::Fields prescriberInfo(const platform::XmlDocument &handover) {
        return support::childFields(handover.selectSingleNode("/Patient/PrescriberInfo"));
    }
};

TEST_F(HandoverDocumentTest, a_personal_number_goes_over_in_PrescriberInfo_alone) {
    const auto handover = CreatePrescriptionXML(nullptr, "1912");
    ASSERT_TRUE(handover);
    EXPECT_EQ(handover->xml().rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    EXPECT_EQ(prescriberInfo(*handover), (support::Fields{{"Username", "demo"},
                                                          {"Password", "hemligt <&> lösen"},
                                                          {"Path", appDir() + "/in/"},
                                                          {"Version", "1.0.2"},
                                                          {"Pnr", "1912"}}));
    EXPECT_EQ(handover->documentElement().childNodes().size(), 1u);
    // The document lives in memory only: the password reaches no file.
    EXPECT_TRUE(support::filesHolding(appDir(), "hemligt").empty());
}

TEST_F(HandoverDocumentTest, a_patient_goes_over_whole_with_only_the_current_products) {
    support::ProductFields current;
    current.id = "S2_1";
    current.regNr = "777";
    current.note = "Tas med mat";
    support::ProductFields past = current;
    past.id = "S1_1";
    past.checked = "0";
    support::ProductFields other;
    other.id = "S3_1";
    other.regNr = "888";
    platform::XmlDocument patient;
    ASSERT_TRUE(patient.loadXML(
        support::patientText("191212121212", "Åström", "Märta", {current, past, other})));

    // The nodes move into the handover document, so their text is taken beforehand.
    const std::string patientData = patient.selectSingleNode("//PatientData").xml();
    const std::string currentProduct = patient.selectSingleNode("//Product[ID = \"S2_1\"]").xml();
    const std::string otherProduct = patient.selectSingleNode("//Product[ID = \"S3_1\"]").xml();

    const auto handover = CreatePrescriptionXML(&patient, "");
    ASSERT_TRUE(handover);
    const auto children = handover->documentElement().childNodes();
    ASSERT_EQ(children.size(), 3u);
    EXPECT_EQ(children[0].nodeName(), "PrescriberInfo");
    EXPECT_EQ(children[1].nodeName(), "PatientData");
    EXPECT_EQ(children[2].nodeName(), "MedicalList");
    EXPECT_EQ(prescriberInfo(*handover).size(), 4u) << "no Pnr in the form for a patient";
    EXPECT_EQ(support::childFields(children[1]).size(), 9u);
    EXPECT_EQ(children[1].xml(), patientData);
    EXPECT_EQ(handover->selectSingleNode("//PatientData/FamilyName").text(), "Åström");

    const auto products = handover->selectNodes("/Patient/MedicalList/Product");
    ASSERT_EQ(products.size(), 2u);
    EXPECT_EQ(products[0].xml(), currentProduct);
    EXPECT_EQ(products[1].xml(), otherProduct);
    EXPECT_EQ(products[0].selectSingleNode("ExtendedMedicalInfo").text(), "Tas med mat");
    EXPECT_EQ(support::childFields(products[0]).size(), 26u);
    EXPECT_TRUE(handover->selectSingleNode("//History").isNull());
}

TEST_F(HandoverDocumentTest, no_medication_gives_an_empty_list_and_no_PatientData_gives_a_box) {
    platform::XmlDocument newPatient;
    ASSERT_TRUE(newPatient.loadXML(support::patientText("1", "A", "B", {})));
    const auto handover = CreatePrescriptionXML(&newPatient, "");
    ASSERT_TRUE(handover);
    EXPECT_TRUE(handover->selectSingleNode("/Patient/MedicalList").childNodes().empty());
    EXPECT_TRUE(boxes.empty());

    platform::XmlDocument broken;
    ASSERT_TRUE(broken.loadXML("<Patient><MedicalList/></Patient>"));
    EXPECT_FALSE(CreatePrescriptionXML(&broken, ""));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text,
              "Kunde inte skapa förskrivningsfil: " + runtime::description(runtime::ObjectNotSet));
    EXPECT_EQ(boxes[0].icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(boxes[0].buttons, platform::MsgBoxButtons::OK);
    EXPECT_EQ(boxes[0].title, "Mirelo");
}

} // namespace

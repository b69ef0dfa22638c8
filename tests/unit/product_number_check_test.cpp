#include "closed_port.h"
#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "intake/product_number_check.h"
#include "korvalo_process.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;

namespace {

std::string item(const std::string &itemId, const std::string &productId,
                 const std::string &timeInterval, const std::string &dosage) {
    return "<PrescriptionItemDetails><PrescriptionItemId>" + itemId +
           "</PrescriptionItemId><RegNr>555</RegNr><Pnmn>Alvedon</Pnmn>"
           "<PrescribedMedicinalProduct><MedicinalProduct><ManufacturedProductId><ProductId>" +
           productId +
           "</ProductId></ManufacturedProductId><Package><NumberOfPackages>2</NumberOfPackages>"
           "</Package></MedicinalProduct><InstructionsForUse><UnstructuredInstructionsForUse>" +
           dosage +
           "</UnstructuredInstructionsForUse></InstructionsForUse>"
           "<RepeatDispensingInstructions><DispensingRepeatNumber>01</DispensingRepeatNumber>" +
           timeInterval +
           "</RepeatDispensingInstructions></PrescribedMedicinalProduct><PaymentDetails>"
           "<PaymentConditions><CareCoverageType>F</CareCoverageType></PaymentConditions>"
           "</PaymentDetails></PrescriptionItemDetails>";
}

const std::string Interval = "<TimeInterval><TimeValue>3</TimeValue><TimeUnit>M</TimeUnit>"
                             "</TimeInterval>";
const std::string Dosage = "<UnstructuredDosageAdmin>1 x 3</UnstructuredDosageAdmin>";

platform::XmlDocument message(const std::string &items) {
    platform::XmlDocument document;
    document.loadXML(
        "<NewPrescriptionMessage><PrescriptionMessage><MessageSender><HealthcareAgent>"
        "<HealthcareParty><HealthcarePerson><Name>Dr. Ström</Name></HealthcarePerson>"
        "</HealthcareParty></HealthcareAgent></"
        "MessageSender><GeneralPrescriptionMessageInformation>"
        "<IdOfMessageByOriginator><IssueDateAndTimeOfMessage>2026-03-01T10:00:00"
        "</IssueDateAndTimeOfMessage></IdOfMessageByOriginator>"
        "</GeneralPrescriptionMessageInformation><PrescriptionSetId>S9</PrescriptionSetId>" +
        items + "</PrescriptionMessage></NewPrescriptionMessage>");
    EXPECT_EQ(document.parseError().errorCode, 0) << document.parseError().reason;
    return document;
}

int32_t failureOf(const platform::XmlDocument &document) {
    try {
        BuildVnrXML(document);
    } catch (const MireloError &error) {
        return error.number();
    }
    return 0;
}

using ProductNumberCheckTest = support::ApplicationTest;

TEST_F(ProductNumberCheckTest, BuildVnrXML_makes_28_fields_per_item_from_the_message_alone) {
    const platform::XmlDocument check = BuildVnrXML(
        message(item("1", "012345", Interval, Dosage) + item("2", "067890", Interval, Dosage)));
    EXPECT_EQ(check.xml().rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    const auto products = check.selectNodes("/VnrCheck/Product");
    ASSERT_EQ(products.size(), 2u);

    std::vector<std::string> fields;
    for (const platform::XmlNode &field : products[0].childNodes()) {
        fields.push_back(field.nodeName() + "=" + field.text());
    }
    EXPECT_EQ(fields, (std::vector<std::string>{"ID=S9_1",
                                                "Vnr=012345",
                                                "RegNr=",
                                                "ProductName=",
                                                "CompanyName=",
                                                "Form=",
                                                "Str=",
                                                "ATCcode=",
                                                "SubstitutionType=",
                                                "CareCoverageType=F",
                                                "NumberOfPackages=2",
                                                "PackageSize=",
                                                "UnstructuredDosageAdmin=1 x 3",
                                                "DispensingRepeatNumber=01",
                                                "TimeValue=3",
                                                "TimeUnit=M",
                                                "PrescribedBy=Dr. Ström",
                                                "PrescribedTimestamp=2026-03-01T10:00:00",
                                                "Checked=1",
                                                "ExtendedMedicalInfo=",
                                                "ExtendedMedicalInfoBy=",
                                                "ExtendedMedicalInfoTimestamp=",
                                                "InsertedBy=Dr. Ström",
                                                "InsertedTimestamp=2026-03-01T10:00:00",
                                                "TakenOutBy=",
                                                "TakenOutTimestamp=",
                                                "Allergic=0",
                                                "AllergicHistory=0"}));
    EXPECT_EQ(products[1].selectSingleNode("ID").text(), "S9_2");
    EXPECT_EQ(products[1].selectSingleNode("Vnr").text(), "067890");

    // No items: a bare root, and nothing else of the message is read.
    platform::XmlDocument empty;
    empty.loadXML("<NewPrescriptionMessage/>");
    EXPECT_TRUE(BuildVnrXML(empty).selectSingleNode("/VnrCheck").childNodes().empty());
}

TEST_F(ProductNumberCheckTest, BuildVnrXML_fails_on_an_item_without_dosage_or_interval) {
    EXPECT_EQ(failureOf(message(item("1", "1", Interval, ""))), runtime::ObjectNotSet);
    EXPECT_EQ(failureOf(message(item("1", "1", "", Dosage))), runtime::ObjectNotSet);
}

TEST_F(ProductNumberCheckTest, PostVnrCheck_gives_the_parsed_answer_of_the_service) {
    support::KorvaloProcess korvalo;
    session().gServer = korvalo.baseUrl();
    const platform::XmlDocument answer = PostVnrCheck(
        message(item("1", "012345", Interval, Dosage) + item("2", "067890", Interval, Dosage)));
    std::vector<std::string> numbers;
    for (const platform::XmlNode &vnr : answer.selectNodes("//Product/Vnr")) {
        numbers.push_back(vnr.text());
    }
    EXPECT_EQ(numbers, (std::vector<std::string>{"012345", "067890"}));
    EXPECT_TRUE(korvalo.stop());
    EXPECT_NE(korvalo.output().find("POST /mirelo/vnr.asp 200"), std::string::npos)
        << korvalo.output();
}

TEST_F(ProductNumberCheckTest, PostVnrCheck_an_error_page_fails_on_the_missing_object) {
    support::KorvaloProcess korvalo({"--vnr-fails"});
    session().gServer = korvalo.baseUrl();
    try {
        PostVnrCheck(message(item("1", "012345", Interval, Dosage)));
        FAIL() << "an HTML answer is no document";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::ObjectNotSet);
        EXPECT_NE(error.number(), static_cast<int32_t>(0x80040203));
    }

    ASSERT_TRUE(korvalo.stop());
    const support::ClosedPort closed;
    session().gServer = closed.baseUrl();
    try {
        PostVnrCheck(message(""));
        FAIL() << "nothing listens any more";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x800C0005));
    }
}

} // namespace

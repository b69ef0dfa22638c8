#include "core/clock.h"
#include "core/mirelo_error.h"
#include "intake/product_record.h"
#include "prescription_message_builder.h"
#include "stored_patient_reading.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;
using mirelo::testing::childFields;
using mirelo::testing::Fields;
using mirelo::testing::MessageItem;
using mirelo::testing::PrescriptionMessage;

namespace {

class ProductRecordTest : public mirelo::testing::ApplicationTest {
  protected:
    // The message as the intake reads it: written as the service writes it, then loaded.
    platform::XmlDocument parsed(const PrescriptionMessage &message) {
        const std::string file = path("in/message.xml");
        mirelo::testing::writePrescriptionMessage(file, message);
        platform::XmlDocument document;
        document.load(file);
        EXPECT_EQ(document.parseError().errorCode, 0) << document.parseError().reason;
        return document;
    }

    int32_t failureOf(const PrescriptionMessage &message) {
        const platform::XmlDocument document = parsed(message);
        try {
            BuildNefXML(document);
        } catch (const MireloError &error) {
            return error.number();
        }
        return 0;
    }
};

TEST_F(ProductRecordTest, BuildNefXML_makes_the_28_elements_of_a_repeated_prescription_in_order) {
    PrescriptionMessage message;
    message.setId = "SET-77";
    message.issued = "2026-03-14T10:20:30.000+01:00";
    MessageItem item;
    item.itemId = "3";
    item.regNr = "19750311";
    item.productName = "Levaxin & Co";
    item.companyName = "Takeda Pharma";
    item.form = "Tablett";
    item.strengthNumber = "50";
    item.strengthUnit = "mikrogram";
    item.atcCode = "H03AA01";
    item.packageSize = "100 st";
    item.productId = "456789";
    item.numberOfPackages = "2";
    item.dosage = "1 tablett på morgonen\nfastande";
    item.repeats = "3";
    item.timeValue = "90";
    item.timeUnit = "dagar";
    item.careCoverageType = "Förmån";
    message.items = {item};

    const platform::XmlDocument document = parsed(message);
    const platform::XmlDocument products = BuildNefXML(document);

    EXPECT_EQ(products.xml().rfind("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 0), 0u);
    EXPECT_EQ(products.documentElement().nodeName(), "VnrCheck");
    const auto found = products.selectNodes("/VnrCheck/Product");
    ASSERT_EQ(found.size(), 1u);
    const Fields expected = {
        {"ID", "SET-77_3"},
        {"Vnr", "456789"},
        {"RegNr", "19750311"},
        {"ProductName", "Levaxin & Co"},
        {"CompanyName", "Takeda Pharma"},
        {"Form", "Tablett"},
        {"Str", "50 mikrogram"},
        {"ATCcode", "H03AA01"},
        {"SubstitutionType", ""},
        {"CareCoverageType", "Förmån"},
        {"NumberOfPackages", "2"},
        {"PackageSize", "100 st"},
        {"UnstructuredDosageAdmin", "1 tablett på morgonen\nfastande"},
        {"DispensingRepeatNumber", "3"},
        {"TimeValue", "90"},
        {"TimeUnit", "dagar"},
        {"PrescribedBy", "Doktor Björk"},
        {"PrescribedTimestamp", "2026-03-14T10:20:30.000+01:00"},
        {"Checked", "1"},
        {"ExtendedMedicalInfo", ""},
        {"ExtendedMedicalInfoBy", ""},
        {"ExtendedMedicalInfoTimestamp", ""},
        {"InsertedBy", "Doktor Björk"},
        {"InsertedTimestamp", "2026-03-14T10:20:30.000+01:00"},
        {"TakenOutBy", ""},
        {"TakenOutTimestamp", ""},
        {"Allergic", "0"},
        {"AllergicHistory", "0"},
    };
    EXPECT_EQ(childFields(found[0]), expected);
    // The message itself is left as it was.
    EXPECT_EQ(document.selectNodes("//Product").size(), 0u);
}

TEST_F(ProductRecordTest, items_with_and_without_interval_number_or_dosage) {
    struct Case {
        const char *name;
        MessageItem item;
        // The RegNr, the dosage, what follows the repeat number, and the number of elements.
        std::vector<std::string> built;
    };
    std::vector<Case> cases(6);
    // Without an interval in the message: at one dispensing it isn't read at all.
    cases[0] = {
        "one dispensing", {}, {"100001", "1 tablett 3 gånger dagligen", "PrescribedBy", "26"}};
    cases[0].item.omitted = {"TimeInterval"};
    cases[1] = {
        "no dispensing", {}, {"100001", "1 tablett 3 gånger dagligen", "PrescribedBy", "26"}};
    cases[1].item.repeats = "0";
    cases[2] = {"two dispensings, with blanks",
                {},
                {"100001", "1 tablett 3 gånger dagligen", "TimeValue", "28"}};
    cases[2].item.repeats = " 2 ";
    // Two built within the same second share the number, and so are one product from now on.
    cases[3] = {"no RegNr nor dosage text", {}, {"20260315140509", "", "PrescribedBy", "26"}};
    cases[3].item.regNr = "";
    cases[3].item.omitted = {"UnstructuredDosageAdmin"};
    cases[4] = {"no RegNr nor instructions", {}, {"20260315140509", "", "PrescribedBy", "26"}};
    cases[4].item.regNr = "";
    cases[4].item.omitted = {"InstructionsForUse"};
    cases[5] = {"an empty dosage", {}, {"100001", "", "PrescribedBy", "26"}};
    cases[5].item.dosage = "";
    PrescriptionMessage message;
    for (size_t i = 0; i < std::size(cases); ++i) {
        cases[i].item.itemId = std::to_string(i + 1);
        message.items.push_back(cases[i].item);
    }
    const platform::XmlDocument document = parsed(message);
    const platform::XmlDocument products = BuildNefXML(document);
    const auto found = products.selectNodes("//Product");
    ASSERT_EQ(found.size(), std::size(cases));
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(cases[i].name);
        const auto children = found[i].childNodes();
        EXPECT_EQ(found[i].selectSingleNode("ID").text(), "S1_" + std::to_string(i + 1));
        EXPECT_EQ((std::vector<std::string>{found[i].selectSingleNode("RegNr").text(),
                                            children[12].text(), children[14].nodeName(),
                                            std::to_string(children.size())}),
                  cases[i].built);
        EXPECT_EQ(children[12].nodeName(), "UnstructuredDosageAdmin");
        EXPECT_EQ(children[13].text(), cases[i].item.repeats);
    }
    EXPECT_EQ(found[2].childNodes()[15].nodeName(), "TimeUnit");

    // A later second gives a later number, on the 24-hour clock.
    freezeClockForTesting(QDateTime(QDate(2026, 12, 1), QTime(23, 59, 58)));
    const platform::XmlDocument later = BuildNefXML(document);
    EXPECT_EQ(later.selectNodes("//Product/RegNr")[3].text(), "20261201235958");
}

TEST_F(ProductRecordTest, an_item_less_message_gives_an_empty_root_without_reading_anything_else) {
    PrescriptionMessage message;
    message.omitted = {"PrescriptionSetId", "MessageSender",
                       "GeneralPrescriptionMessageInformation"};

    const platform::XmlDocument document = parsed(message);
    const platform::XmlDocument products = BuildNefXML(document);
    EXPECT_EQ(products.documentElement().nodeName(), "VnrCheck");
    EXPECT_TRUE(products.documentElement().childNodes().empty());
}

TEST_F(ProductRecordTest,
       a_missing_element_fails_with_91_and_a_repeat_number_not_a_number_with_13) {
    constexpr int32_t ObjectNotSet = 91;
    constexpr int32_t TypeMismatch = 13;
    for (const char *required : {"PrescriptionItemId", "RegNr", "Pnmn", "Tknm", "Berf", "Strnum",
                                 "Strenh", "Atccode", "Forpstl", "ProductId", "NumberOfPackages",
                                 "DispensingRepeatNumber", "CareCoverageType"}) {
        PrescriptionMessage message;
        MessageItem item;
        item.omitted = {required};
        message.items = {item};
        EXPECT_EQ(failureOf(message), ObjectNotSet) << required;
    }
    for (const char *required :
         {"PrescriptionSetId", "MessageSender", "IssueDateAndTimeOfMessage"}) {
        PrescriptionMessage message;
        message.items = {MessageItem{}};
        message.omitted = {required};
        EXPECT_EQ(failureOf(message), ObjectNotSet) << required;
    }
    for (const char *interval : {"TimeValue", "TimeUnit"}) {
        PrescriptionMessage message;
        MessageItem item;
        item.repeats = "2";
        item.omitted = {interval};
        message.items = {item};
        EXPECT_EQ(failureOf(message), ObjectNotSet) << interval;
    }
    for (const char *repeats : {"", "två", "2x"}) {
        PrescriptionMessage message;
        MessageItem item;
        item.repeats = repeats;
        message.items = {item};
        EXPECT_EQ(failureOf(message), TypeMismatch) << repeats;
    }
    // Of two items that can't be read, the first in the message decides the failure.
    MessageItem notANumber;
    notANumber.repeats = "två";
    MessageItem withoutName;
    withoutName.omitted = {"Pnmn"};
    for (const auto &[items, failure] :
         {std::pair{std::vector{notANumber, withoutName}, TypeMismatch},
          std::pair{std::vector{withoutName, notANumber}, ObjectNotSet}}) {
        PrescriptionMessage message;
        message.items = items;
        EXPECT_EQ(failureOf(message), failure);
    }
}

} // namespace

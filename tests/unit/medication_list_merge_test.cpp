#include "core/mirelo_error.h"
#include "intake/medication_list_merge.h"
#include "intake/product_record.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;
using mirelo::testing::MessageItem;
using mirelo::testing::PrescriptionMessage;
using mirelo::testing::ProductFields;

namespace {

platform::XmlDocument parsedText(const std::string &text) {
    platform::XmlDocument document;
    document.loadXML(text);
    EXPECT_EQ(document.parseError().errorCode, 0) << document.parseError().reason;
    return document;
}

platform::XmlDocument patientWith(const std::vector<ProductFields> &products) {
    return parsedText(mirelo::testing::patientText("191212121212", "Åström", "Märta", products));
}

// A message of items with the given ids and RegNr, in that order.
platform::XmlDocument messageOf(const std::vector<std::pair<std::string, std::string>> &items) {
    PrescriptionMessage message;
    for (const auto &[id, regNr] : items) {
        MessageItem item;
        item.itemId = id;
        item.regNr = regNr;
        message.items.push_back(item);
    }
    return parsedText(mirelo::testing::prescriptionMessageText(message));
}

std::string valueOf(const platform::XmlNode &product, const std::string &name) {
    return product.selectSingleNode(name).text();
}

std::vector<std::string> rootChildren(const platform::XmlDocument &patient) {
    std::vector<std::string> names;
    for (const auto &child : patient.documentElement().childNodes()) {
        names.push_back(child.nodeName());
    }
    return names;
}

int32_t failureOf(const platform::XmlDocument &message, platform::XmlDocument &patient) {
    try {
        TakeInMessageItems(message, patient);
    } catch (const MireloError &error) {
        return error.number();
    }
    return 0;
}

class MedicationListMergeTest : public mirelo::testing::ApplicationTest {};

TEST_F(MedicationListMergeTest, the_first_product_starts_a_MedicalList_after_the_patient_data) {
    platform::XmlDocument patient = patientWith({});
    TakeInMessageItems(messageOf({{"1", "100001"}}), patient);
    EXPECT_EQ(rootChildren(patient), (std::vector<std::string>{"PatientData", "MedicalList"}));
    const auto products = patient.selectNodes("/Patient/MedicalList/Product");
    ASSERT_EQ(products.size(), 1u);
    EXPECT_EQ(valueOf(products[0], "ID"), "S1_1");
    EXPECT_EQ(valueOf(products[0], "Checked"), "1");

    // A patient who has allergy records but no products yet gets the list after them.
    platform::XmlDocument withHistory =
        parsedText("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Patient><PatientData/><History>"
                   "<AllergicHistory><RegNr>100001</RegNr></AllergicHistory></History></Patient>");
    TakeInMessageItems(messageOf({{"1", "100001"}}), withHistory);
    EXPECT_EQ(rootChildren(withHistory),
              (std::vector<std::string>{"PatientData", "History", "MedicalList"}));
}

TEST_F(MedicationListMergeTest, a_new_product_goes_first_and_only_the_same_RegNr_is_retired) {
    ProductFields older;
    older.id = "OLD_1";
    older.regNr = "100001";
    ProductFields other;
    other.id = "OLD_2";
    other.regNr = "200002";
    std::string text = mirelo::testing::patientText("1", "A", "B", {older, other});
    const std::string history = "<History><AllergicHistory><RegNr>100001</RegNr>"
                                "<AllergicStatusHistory>1</AllergicStatusHistory>"
                                "<AllergicInfoHistory>Utslag</AllergicInfoHistory>"
                                "<AllergicInfoByHistory>Doktor Ek</AllergicInfoByHistory>"
                                "<AllergicInfoTimestampHistory>2026-01-01 10:00:00"
                                "</AllergicInfoTimestampHistory></AllergicHistory></History>";
    text.insert(text.find("</Patient>"), history);
    platform::XmlDocument patient = parsedText(text);
    const std::string historyBefore = patient.selectSingleNode("//History").xml();

    TakeInMessageItems(messageOf({{"7", "300003"}, {"8", "100001"}}), patient);

    const auto products = patient.selectNodes("//Product");
    ASSERT_EQ(products.size(), 4u);
    EXPECT_EQ(valueOf(products[0], "ID"), "S1_8");
    EXPECT_EQ(valueOf(products[1], "ID"), "S1_7");
    EXPECT_EQ(valueOf(products[2], "ID"), "OLD_1");
    EXPECT_EQ(valueOf(products[3], "ID"), "OLD_2");
    EXPECT_EQ(valueOf(products[0], "Checked"), "1");
    EXPECT_EQ(valueOf(products[1], "Checked"), "1");
    EXPECT_EQ(valueOf(products[2], "Checked"), "0");
    EXPECT_EQ(valueOf(products[3], "Checked"), "1");
    // Nobody took the retired one out, so nobody is recorded.
    EXPECT_EQ(valueOf(products[2], "TakenOutBy"), "");
    EXPECT_EQ(valueOf(products[2], "TakenOutTimestamp"), "");
    EXPECT_EQ(patient.selectSingleNode("//History").xml(), historyBefore);
    EXPECT_EQ(rootChildren(patient),
              (std::vector<std::string>{"PatientData", "MedicalList", "History"}));
}

TEST_F(MedicationListMergeTest, an_older_product_hands_on_its_note_and_warning_together) {
    // Already taken out, still noted and warned: it stays out and hands both on, without the
    // note's author and time.
    ProductFields takenOut;
    takenOut.checked = "0";
    takenOut.note = "Tål ej laktos";
    takenOut.noteBy = "Doktor Ek";
    takenOut.noteTimestamp = "2026-01-02 08:00:00";
    takenOut.allergic = "1";
    platform::XmlDocument patient = patientWith({takenOut});
    TakeInMessageItems(messageOf({{"2", "100001"}}), patient);
    auto products = patient.selectNodes("//Product");
    ASSERT_EQ(products.size(), 2u);
    EXPECT_EQ(valueOf(products[1], "Checked"), "0");
    EXPECT_EQ(valueOf(products[0], "Checked"), "1");
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfo"), "Tål ej laktos");
    EXPECT_EQ(valueOf(products[0], "Allergic"), "1");
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfoBy"), "");
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfoTimestamp"), "");
    EXPECT_EQ(valueOf(products[0], "AllergicHistory"), "0");

    // A warning that was taken away leaves only the history mark.
    ProductFields warningRemoved;
    warningRemoved.allergicHistory = "1";
    patient = patientWith({warningRemoved});
    TakeInMessageItems(messageOf({{"2", "100001"}}), patient);
    products = patient.selectNodes("//Product");
    EXPECT_EQ(valueOf(products[0], "AllergicHistory"), "1");
    EXPECT_EQ(valueOf(products[0], "Allergic"), "0");
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfo"), "");

    // A warning without a note is handed on with the empty note.
    ProductFields warnedOnly;
    warnedOnly.allergic = "1";
    patient = patientWith({warnedOnly});
    TakeInMessageItems(messageOf({{"2", "100001"}}), patient);
    products = patient.selectNodes("//Product");
    EXPECT_EQ(valueOf(products[0], "Allergic"), "1");
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfo"), "");
    EXPECT_EQ(valueOf(products[0], "AllergicHistory"), "0");
}

TEST_F(MedicationListMergeTest,
       where_older_products_differ_the_oldest_with_a_note_or_warning_wins) {
    ProductFields newest;
    newest.id = "3_1";
    newest.note = "ny anteckning";
    newest.allergicHistory = "1";
    ProductFields middle;
    middle.id = "2_1";
    middle.checked = "0";
    middle.note = "gammal anteckning";
    middle.allergic = "1";
    ProductFields oldest;
    oldest.id = "1_1";
    oldest.checked = "0";
    // Neither note nor warning: copies nothing, and clears nothing an earlier one copied.
    platform::XmlDocument patient = patientWith({newest, middle, oldest});
    TakeInMessageItems(messageOf({{"9", "100001"}}), patient);
    const auto products = patient.selectNodes("//Product");
    ASSERT_EQ(products.size(), 4u);
    EXPECT_EQ(valueOf(products[0], "ExtendedMedicalInfo"), "gammal anteckning");
    EXPECT_EQ(valueOf(products[0], "Allergic"), "1");
    EXPECT_EQ(valueOf(products[0], "AllergicHistory"), "1");
    for (size_t i = 1; i < products.size(); ++i) {
        EXPECT_EQ(valueOf(products[i], "Checked"), "0") << i;
    }
}

TEST_F(MedicationListMergeTest, two_items_of_one_RegNr_leave_the_second_current_above_the_first) {
    platform::XmlDocument patient = patientWith({});
    TakeInMessageItems(messageOf({{"1", "100001"}, {"2", "100001"}}), patient);
    const auto products = patient.selectNodes("//Product");
    ASSERT_EQ(products.size(), 2u);
    EXPECT_EQ(valueOf(products[0], "ID"), "S1_2");
    EXPECT_EQ(valueOf(products[0], "Checked"), "1");
    EXPECT_EQ(valueOf(products[1], "ID"), "S1_1");
    EXPECT_EQ(valueOf(products[1], "Checked"), "0");
}

TEST_F(MedicationListMergeTest, an_empty_RegNr_of_an_older_product_is_never_matched) {
    // Flags that couldn't even be read show that the older product isn't looked at.
    ProductFields unregistered;
    unregistered.regNr = "";
    unregistered.checked = "";
    unregistered.allergic = "x";
    platform::XmlDocument patient = patientWith({unregistered});
    PrescriptionMessage message;
    message.items = {MessageItem{}};
    const platform::XmlDocument products =
        BuildNefXML(parsedText(mirelo::testing::prescriptionMessageText(message)));
    const platform::XmlNode product = products.selectSingleNode("//Product");
    product.selectSingleNode("RegNr").setText("");

    MergeProductIntoMedicalList(patient, product);

    const auto found = patient.selectNodes("//Product");
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(valueOf(found[0], "RegNr"), "");
    EXPECT_EQ(valueOf(found[1], "Checked"), "");
    EXPECT_EQ(valueOf(found[0], "Allergic"), "0");
}

TEST_F(MedicationListMergeTest, unreadable_flags_of_the_same_RegNr_fail_and_of_another_do_not) {
    constexpr int32_t TypeMismatch = 13;
    constexpr int32_t ObjectNotSet = 91;
    const platform::XmlDocument message = messageOf({{"1", "100001"}});

    ProductFields emptyChecked;
    emptyChecked.checked = "";
    platform::XmlDocument patient = patientWith({emptyChecked});
    EXPECT_EQ(failureOf(message, patient), TypeMismatch);

    // The warning is read even beside a note.
    ProductFields badAllergic;
    badAllergic.note = "anteckning";
    badAllergic.allergic = "ja";
    patient = patientWith({badAllergic});
    EXPECT_EQ(failureOf(message, patient), TypeMismatch);

    ProductFields noHistory;
    noHistory.omitted = {"AllergicHistory"};
    patient = patientWith({noHistory});
    EXPECT_EQ(failureOf(message, patient), ObjectNotSet);

    ProductFields otherBroken;
    otherBroken.regNr = "999999";
    otherBroken.checked = "";
    otherBroken.omitted = {"Allergic", "ExtendedMedicalInfo"};
    patient = patientWith({otherBroken});
    EXPECT_EQ(failureOf(message, patient), 0);
    EXPECT_EQ(patient.selectNodes("//Product").size(), 2u);
}

} // namespace

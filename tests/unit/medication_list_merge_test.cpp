#include "core/mirelo_error.h"
#include "intake/medication_list_merge.h"
#include "intake/product_record.h"
#include "patient_file_builder.h"
#include "prescription_message_builder.h"
#include "test_environment.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace mirelo;
using mirelo::testing::MessageItem;
using mirelo::testing::PrescriptionMessage;
using mirelo::testing::ProductFields;
using Texts = std::vector<std::string>;

namespace {

platform::XmlDocument parsedText(const std::string &text) {
    platform::XmlDocument document;
    document.loadXML(text);
    EXPECT_EQ(document.parseError().errorCode, 0) << document.parseError().reason;
    return document;
}

platform::XmlDocument patientWith(const std::vector<ProductFields> &products,
                                  const std::string &afterProducts = "") {
    std::string text = mirelo::testing::patientText("191212121212", "Åström", "Märta", products);
    text.insert(text.rfind("</Patient>"), afterProducts);
    return parsedText(text);
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

// One element of every product, in document order.
Texts column(const platform::XmlDocument &patient, const std::string &name) {
    Texts values;
    for (const auto &product : patient.selectNodes("//Product")) {
        values.push_back(product.selectSingleNode(name).text());
    }
    return values;
}

Texts rootChildren(const platform::XmlDocument &patient) {
    Texts names;
    for (const auto &child : patient.documentElement().childNodes()) {
        names.push_back(child.nodeName());
    }
    return names;
}

class MedicationListMergeTest : public mirelo::testing::ApplicationTest {};

TEST_F(MedicationListMergeTest, the_first_product_starts_a_MedicalList_after_what_is_there) {
    platform::XmlDocument patient = patientWith({});
    TakeInMessageItems(messageOf({{"1", "100001"}}), patient);
    EXPECT_EQ(rootChildren(patient), (Texts{"PatientData", "MedicalList"}));
    EXPECT_EQ(column(patient, "ID"), Texts{"S1_1"});
    EXPECT_EQ(column(patient, "Checked"), Texts{"1"});

    // A patient who has allergy records but no products yet gets the list after them.
    platform::XmlDocument withHistory =
        parsedText("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Patient><PatientData/><History>"
                   "<AllergicHistory><RegNr>100001</RegNr></AllergicHistory></History></Patient>");
    TakeInMessageItems(messageOf({{"1", "100001"}}), withHistory);
    EXPECT_EQ(rootChildren(withHistory), (Texts{"PatientData", "History", "MedicalList"}));
}

TEST_F(MedicationListMergeTest, new_products_go_first_and_only_the_same_RegNr_is_retired) {
    ProductFields older;
    older.id = "OLD_1";
    ProductFields other;
    other.id = "OLD_2";
    other.regNr = "200002";
    platform::XmlDocument patient =
        patientWith({older, other}, "<History><AllergicHistory><RegNr>100001</RegNr>"
                                    "<AllergicStatusHistory>1</AllergicStatusHistory>"
                                    "</AllergicHistory></History>");
    const std::string historyBefore = patient.selectSingleNode("//History").xml();

    TakeInMessageItems(messageOf({{"7", "300003"}, {"8", "100001"}}), patient);
    EXPECT_EQ(column(patient, "ID"), (Texts{"S1_8", "S1_7", "OLD_1", "OLD_2"}));
    EXPECT_EQ(column(patient, "Checked"), (Texts{"1", "1", "0", "1"}));
    // Nobody took the retired one out, so nobody is recorded.
    EXPECT_EQ(column(patient, "TakenOutBy"), (Texts{"", "", "", ""}));
    EXPECT_EQ(column(patient, "TakenOutTimestamp"), (Texts{"", "", "", ""}));
    EXPECT_EQ(patient.selectSingleNode("//History").xml(), historyBefore);
    EXPECT_EQ(rootChildren(patient), (Texts{"PatientData", "MedicalList", "History"}));

    // Two items of one RegNr leave the second current above the first.
    patient = patientWith({});
    TakeInMessageItems(messageOf({{"1", "100001"}, {"2", "100001"}}), patient);
    EXPECT_EQ(column(patient, "ID"), (Texts{"S1_2", "S1_1"}));
    EXPECT_EQ(column(patient, "Checked"), (Texts{"1", "0"}));
}

TEST_F(MedicationListMergeTest, older_products_hand_on_their_note_warning_and_history_mark) {
    const auto product = [](const char *id, const char *checked, const char *note,
                            const char *allergic, const char *history) {
        ProductFields fields;
        fields.id = id;
        fields.checked = checked;
        fields.note = note;
        fields.noteBy = *note ? "Doktor Ek" : "";
        fields.noteTimestamp = *note ? "2026-01-02 08:00:00" : "";
        fields.allergic = allergic;
        fields.allergicHistory = history;
        return fields;
    };
    struct Case {
        const char *name;
        std::vector<ProductFields> older;
        // The new product's note, author of the note, warning and history mark.
        Texts taken;
    };
    const Case cases[] = {
        {"taken out, noted and warned: both handed on without author and time",
         {product("1_1", "0", "Tål ej laktos", "1", "0")},
         {"Tål ej laktos", "", "1", "0"}},
        {"a warning taken away leaves only the history mark",
         {product("1_1", "1", "", "0", "1")},
         {"", "", "0", "1"}},
        {"a warning without a note is handed on with the empty note",
         {product("1_1", "1", "", "1", "0")},
         {"", "", "1", "0"}},
        // The oldest copies nothing and clears nothing an earlier one copied.
        {"where older ones differ, the oldest with a note or warning wins",
         {product("3_1", "1", "ny anteckning", "0", "1"),
          product("2_1", "0", "gammal anteckning", "1", "0"), product("1_1", "0", "", "0", "0")},
         {"gammal anteckning", "", "1", "1"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        platform::XmlDocument patient = patientWith(c.older);
        TakeInMessageItems(messageOf({{"9", "100001"}}), patient);
        Texts retired(c.older.size() + 1, "0");
        retired[0] = "1";
        EXPECT_EQ(column(patient, "Checked"), retired);
        EXPECT_EQ((Texts{column(patient, "ExtendedMedicalInfo")[0],
                         column(patient, "ExtendedMedicalInfoBy")[0],
                         column(patient, "Allergic")[0], column(patient, "AllergicHistory")[0]}),
                  c.taken);
        EXPECT_EQ(column(patient, "ExtendedMedicalInfoTimestamp")[0], "");
    }
}

TEST_F(MedicationListMergeTest, an_empty_RegNr_of_an_older_product_is_never_matched) {
    // Flags that couldn't even be read show that the older product isn't looked at.
    ProductFields unregistered;
    unregistered.regNr = "";
    unregistered.checked = "";
    unregistered.allergic = "x";
    platform::XmlDocument patient = patientWith({unregistered});
    const platform::XmlDocument products = BuildNefXML(messageOf({{"1", "100001"}}));
    const platform::XmlNode product = products.selectSingleNode("//Product");
    product.selectSingleNode("RegNr").setText("");

    MergeProductIntoMedicalList(patient, product);
    EXPECT_EQ(column(patient, "RegNr"), (Texts{"", ""}));
    EXPECT_EQ(column(patient, "Checked"), (Texts{"1", ""}));
    EXPECT_EQ(column(patient, "Allergic"), (Texts{"0", "x"}));
}

TEST_F(MedicationListMergeTest, unreadable_flags_of_the_same_RegNr_fail_and_of_another_do_not) {
    constexpr int32_t TypeMismatch = 13;
    constexpr int32_t ObjectNotSet = 91;
    struct Case {
        const char *name;
        ProductFields older;
        int32_t failure;
    };
    std::vector<Case> cases(4);
    cases[0] = {"an empty Checked", {}, TypeMismatch};
    cases[0].older.checked = "";
    // The warning is read even beside a note.
    cases[1] = {"a warning that is no number", {}, TypeMismatch};
    cases[1].older.note = "anteckning";
    cases[1].older.allergic = "ja";
    cases[2] = {"no history mark", {}, ObjectNotSet};
    cases[2].older.omitted = {"AllergicHistory"};
    cases[3] = {"another RegNr, broken", {}, 0};
    cases[3].older.regNr = "999999";
    cases[3].older.checked = "";
    cases[3].older.omitted = {"Allergic", "ExtendedMedicalInfo"};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        platform::XmlDocument patient = patientWith({c.older});
        int32_t failure = 0;
        try {
            TakeInMessageItems(messageOf({{"1", "100001"}}), patient);
        } catch (const MireloError &error) {
            failure = error.number();
        }
        EXPECT_EQ(failure, c.failure);
        EXPECT_EQ(column(patient, "ID").size(), c.failure == 0 ? 2u : 1u);
    }
}

} // namespace

// What taking a message's items into a patient's file leaves: the file's text, or the failure.
std::string outcome(const std::function<void()> &takeIn, const platform::XmlDocument &patient) {
    try {
        takeIn();
        return patient.xml();
    } catch (const MireloError &error) {
        return "fel " + std::to_string(error.number());
    }
}

// A message's items are taken in together, each older product read once; whatever shape a
// hand-edited file has, the result is what taking the items in one by one gives. In the last
// two shapes retiring the first product takes a product, or the list itself, out of the file.
TEST_F(MedicationListMergeTest, a_message_gives_what_its_items_one_by_one_give) {
    const auto product = [](const std::string &regNr, const std::string &checked) {
        return "<Product><RegNr>" + regNr + "</RegNr><Checked>" + checked +
               "</Checked><ExtendedMedicalInfo>anteckning</ExtendedMedicalInfo>"
               "<Allergic>1</Allergic><AllergicHistory>1</AllergicHistory></Product>";
    };
    const struct {
        const char *shape;
        std::string body;
    } files[] = {
        {"products side by side",
         "<MedicalList>" + product("100001", "1") + product("200002", "1") + "</MedicalList>"},
        {"a product inside another's Checked",
         "<MedicalList>" + product("100001", "<Product><RegNr>1</RegNr></Product>") +
             "</MedicalList>"},
        {"the MedicalList inside a product's Checked", product("100001", "1<MedicalList/>")},
    };
    const platform::XmlDocument message = messageOf({{"1", "100001"}, {"2", "1"}, {"3", "200002"}});
    for (const auto &file : files) {
        SCOPED_TRACE(file.shape);
        const std::string text = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                                 "<Patient><PatientData/>" +
                                 file.body + "</Patient>";
        platform::XmlDocument together = parsedText(text);
        platform::XmlDocument oneByOne = parsedText(text);
        const platform::XmlDocument products = BuildNefXML(message);
        EXPECT_EQ(outcome([&] { TakeInMessageItems(message, together); }, together),
                  outcome(
                      [&] {
                          for (const platform::XmlNode &each : products.selectNodes("//Product")) {
                              MergeProductIntoMedicalList(oneByOne, each);
                          }
                      },
                      oneByOne));
    }
}

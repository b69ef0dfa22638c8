#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "patient_file_builder.h"
#include "records/medical_list_update.h"
#include "records/medication_view_interaction.h"
#include "records/patient_file.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;
using support::ProductFields;

namespace {

const std::string Pnr = "191212121212";

class MedicationViewInteractionTest : public support::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        session().gSignature = "Doktor Signe Åberg";
    }

    std::string filePath() const { return session().gDataPath + Pnr + ".xml"; }

    // Stores the products and gives the file's text as the program itself writes it, so
    // that a change can be told from a rewrite.
    std::string store(const std::vector<ProductFields> &products) {
        support::storePatientFile(Pnr + ".xml",
                                  support::patientText(Pnr, "Tolvansson", "Tolvan", products));
        WritePatientFile(ReadPatientFile(filePath()), filePath());
        return storedText();
    }

    std::string storedText() const {
        return support::latin1ToUtf8(support::unscrambleBytes(support::readBytes(filePath())));
    }

    // The text with one element of the product `id` changed, nothing else.
    static std::string changed(std::string text, const std::string &id, const std::string &from,
                               const std::string &to) {
        const size_t product = text.find("<ID>" + id + "</ID>");
        const size_t at = text.find(from, product);
        EXPECT_NE(at, std::string::npos) << from;
        return text.replace(at, from.size(), to);
    }

    static ProductFields product(const std::string &id, const std::string &checked) {
        ProductFields fields;
        fields.id = id;
        fields.checked = checked;
        return fields;
    }
};

TEST_F(MedicationViewInteractionTest, updateMedicalList_takes_a_current_product_out_and_signs_it) {
    ProductFields older = product("4_1", "0");
    const std::string before = store({product("5_1", "1"), older});

    const platform::XmlDocument written = updateMedicalList("5_1", Pnr);

    std::string expected = changed(before, "5_1", "<Checked>1</Checked>", "<Checked>0</Checked>");
    expected =
        changed(expected, "5_1", "<TakenOutBy/>", "<TakenOutBy>Doktor Signe Åberg</TakenOutBy>");
    expected = changed(expected, "5_1", "<TakenOutTimestamp/>",
                       "<TakenOutTimestamp>2026-03-15 14:05:09</TakenOutTimestamp>");
    EXPECT_EQ(storedText(), expected);
    EXPECT_EQ(support::readBytes(filePath()),
              support::scrambleBytes(support::utf8ToLatin1(expected)));
    EXPECT_EQ(written.xml(), expected);
}

TEST_F(MedicationViewInteractionTest,
       updateMedicalList_puts_a_past_product_back_keeping_who_took_it_out) {
    ProductFields past = product("4_1", "0");
    past.takenOutBy = "Doktor Al";
    past.takenOutTimestamp = "2026-02-01 10:00:00";
    // Same RegNr as the current one: both are current afterwards, nothing stops it.
    const std::string before = store({product("5_1", "1"), past});

    updateMedicalList("4_1", Pnr);

    std::string expected = changed(before, "4_1", "<Checked>0</Checked>", "<Checked>1</Checked>");
    expected = changed(expected, "4_1", "<InsertedBy>Doktor Ek</InsertedBy>",
                       "<InsertedBy>Doktor Signe Åberg</InsertedBy>");
    expected =
        changed(expected, "4_1", "<InsertedTimestamp>2026-01-10T09:30:00</InsertedTimestamp>",
                "<InsertedTimestamp>2026-03-15 14:05:09</InsertedTimestamp>");
    EXPECT_EQ(storedText(), expected);
}

TEST_F(MedicationViewInteractionTest, updateMedicalList_leaves_the_file_alone_when_it_fails) {
    try {
        updateMedicalList("5_1", Pnr);
        FAIL();
    } catch (const MireloError &error) {
        // Only the medication view's reading translates a missing file; here it stays 53.
        EXPECT_EQ(error.number(), runtime::FileNotFound);
    }

    store({product("5_1", "1")});
    const std::string bytes = support::readBytes(filePath());
    try {
        updateMedicalList("9_9", Pnr);
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), runtime::ObjectNotSet);
    }
    EXPECT_EQ(support::readBytes(filePath()), bytes);

    support::writeBytes(filePath(), support::scrambleBytes("<Patient><MedicalList>"));
    try {
        updateMedicalList("5_1", Pnr);
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040204));
    }
    EXPECT_EQ(support::readBytes(filePath()), support::scrambleBytes("<Patient><MedicalList>"));
}

TEST_F(MedicationViewInteractionTest,
       DetailPanelOnSelChange_fills_the_panel_of_the_selected_product) {
    ProductFields warned = product("5_1", "1");
    warned.prescribedBy = "Doktor Ek";
    warned.insertedBy = "Doktor Al";
    warned.insertedTimestamp = "2026-03-01 08:00:00";
    warned.takenOutBy = "Doktor Bo";
    warned.takenOutTimestamp = "2026-02-01 10:00:00";
    warned.allergic = "1";
    warned.allergicHistory = "1";
    ProductFields plain = product("6_1", "1");
    store({warned, plain});

    const auto panel =
        DetailPanelOnSelChange(Pnr, {0, 3, 1, "Alvedon Tablett 500 mg Orion", "5_1"});
    ASSERT_TRUE(panel);
    EXPECT_EQ(panel->frame1Caption, "Alvedon Tablett 500 mg Orion, ordinerat av: Doktor Ek");
    EXPECT_EQ(panel->label12, "Doktor Al");
    EXPECT_EQ(panel->label16, "2026-03-01 08:00:00");
    EXPECT_EQ(panel->label13, "Doktor Bo");
    EXPECT_EQ(panel->label17, "2026-02-01 10:00:00");
    EXPECT_EQ(panel->warningLineVisible, true);
    EXPECT_EQ(panel->standingButton, ExtendedInfoButton::cmdExtInfo);
    EXPECT_TRUE(panel->cmdAllergicHistoryVisible);
    EXPECT_TRUE(panel->markRow);

    // Without a warning the line goes and the buttons stay as they are.
    const auto other = DetailPanelOnSelChange(Pnr, {2, 5, 2, "Alvedon", "6_1"});
    ASSERT_TRUE(other);
    EXPECT_EQ(other->warningLineVisible, false);
    EXPECT_FALSE(other->standingButton);
    EXPECT_FALSE(other->cmdAllergicHistoryVisible);
    EXPECT_EQ(other->label13, "");

    // A blank row empties the texts and leaves the warning line and the marking alone.
    const auto blank = DetailPanelOnSelChange(Pnr, {9, 3, 9, "", ""});
    ASSERT_TRUE(blank);
    EXPECT_EQ(blank->frame1Caption, "");
    EXPECT_EQ(blank->label12, "");
    EXPECT_FALSE(blank->cmdAllergicHistoryVisible);
    EXPECT_FALSE(blank->warningLineVisible);
    EXPECT_FALSE(blank->markRow);

    // The heading selects nothing.
    EXPECT_FALSE(DetailPanelOnSelChange(Pnr, {0, 4, 0, "Läkemedel", " ID"}));
    EXPECT_FALSE(DetailPanelOnSelChange(Pnr, {3, 1, 0, "Läkemedel", " ID"}));
    EXPECT_TRUE(DetailPanelOnSelChange(Pnr, {0, 1, 2, "Alvedon", "6_1"}));
}

TEST_F(MedicationViewInteractionTest, DetailPanelOnSelChange_reads_the_file_before_anything_else) {
    support::writeBytes(filePath(), support::scrambleBytes("<Patient>"));
    try {
        DetailPanelOnSelChange(Pnr, {0, 4, 0, "", ""});
        FAIL();
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), static_cast<int32_t>(0x80040204));
    }
}

TEST_F(MedicationViewInteractionTest, MeaningOfMouseDown_follows_the_icon_under_the_left_button) {
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 2, 1), GridClick::TakeOut);
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 2, 2), GridClick::PutBack);
    EXPECT_EQ(MeaningOfMouseDown(2, 3, 2, 1), GridClick::Nothing);
    // An empty tick box cell of a blank row, and the heading, have no icon.
    EXPECT_EQ(MeaningOfMouseDown(1, 13, 2, 0), GridClick::Nothing);
    EXPECT_EQ(MeaningOfMouseDown(1, 0, 2, 0), GridClick::Nothing);

    EXPECT_EQ(MeaningOfMouseDown(1, 3, 1, 3), GridClick::OpenExtendedInfo);
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 1, 6), GridClick::OpenExtendedInfo);
    EXPECT_EQ(MeaningOfMouseDown(1, 0, 1, 6), GridClick::Nothing);
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 1, 7), GridClick::Nothing);

    EXPECT_EQ(MeaningOfMouseDown(1, 3, 0, 7), GridClick::OpenAllergyHistory);
    EXPECT_EQ(MeaningOfMouseDown(1, 0, 0, 7), GridClick::Nothing);
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 0, 0), GridClick::Nothing);
    EXPECT_EQ(MeaningOfMouseDown(1, 3, 3, 1), GridClick::Nothing);

    EXPECT_EQ(ReselectAfterTick(GridClick::TakeOut, false), ReselectionAfterTick::FirstRow);
    EXPECT_EQ(ReselectAfterTick(GridClick::TakeOut, true), ReselectionAfterTick::ById);
    EXPECT_EQ(ReselectAfterTick(GridClick::PutBack, false), ReselectionAfterTick::ById);
}

TEST_F(MedicationViewInteractionTest, failure_boxes_say_what_each_handler_says) {
    const MireloError missing(runtime::FileNotFound, runtime::description(runtime::FileNotFound));
    const auto mouseDown = MouseDownFailureBox(missing);
    EXPECT_EQ(mouseDown.text, "Filen hittades inte");
    EXPECT_EQ(mouseDown.icon, platform::MsgBoxIcon::Stop);
    EXPECT_EQ(mouseDown.title, "Mirelo");

    const auto gone =
        ChkModeFailureReport(MireloError(errors::PatientFileMissing, "Patientens fil saknas."));
    EXPECT_EQ(gone.box.text, "Patientens fil saknas.");
    EXPECT_EQ(gone.box.icon, platform::MsgBoxIcon::Stop);
    EXPECT_TRUE(gone.backToSearch);
    EXPECT_TRUE(
        ChkModeFailureReport(MireloError(errors::PatientFileDamaged, "Patientfil är skadad."))
            .backToSearch);

    const auto other = ChkModeFailureReport(MireloError(errors::LoginResponseDamaged, "Fel"));
    EXPECT_EQ(other.box.text, "-2147220990 Fel");
    EXPECT_EQ(other.box.icon, platform::MsgBoxIcon::None);
    EXPECT_EQ(other.box.title, "Mirelo");
    EXPECT_FALSE(other.backToSearch);

    EXPECT_EQ(SetupFlexGridFailureBox(MireloError(5, "Ogiltigt")).text,
              "Kunde inte skapa struktur för flexgrid: Ogiltigt");
}

} // namespace

#include "core/application_context.h"
#include "core/mirelo_error.h"
#include "patient_file_builder.h"
#include "platform/xml_document.h"
#include "records/medication_overview.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;
namespace support = mirelo::testing;
using support::ProductFields;

namespace {

const RgbColor Red{255, 0, 0};

class MedicationOverviewTest : public support::ApplicationTest {
  protected:
    static platform::XmlDocument patient(const std::vector<ProductFields> &products) {
        platform::XmlDocument document;
        EXPECT_TRUE(document.loadXML(
            support::patientText("191212121212", "Tolvansson", "Tolvan", products)));
        return document;
    }

    static ProductFields product(const std::string &id, const std::string &atc,
                                 const std::string &checked = "1") {
        ProductFields fields;
        fields.id = id;
        fields.regNr = "R" + id;
        fields.atcCode = atc;
        fields.checked = checked;
        return fields;
    }

    static std::vector<std::string> column(const MedicationOverview &view, int col) {
        std::vector<std::string> texts;
        for (const MedicationRow &row : view.rows) {
            texts.push_back(row.cells[col].text);
        }
        return texts;
    }

    static std::vector<int> pictures(const MedicationOverview &view, int col) {
        std::vector<int> numbers;
        for (const MedicationRow &row : view.rows) {
            numbers.push_back(row.cells[col].picture);
        }
        return numbers;
    }
};

TEST_F(MedicationOverviewTest, FillFlexGrid_writes_every_cell_of_a_product_row) {
    ProductFields alvedon = product("7_1", "N02BE01");
    alvedon.productName = "Alvedon";
    alvedon.form = "Filmdragerad tablett";
    alvedon.strength = "500 mg";
    alvedon.companyName = "Orion Pharma";
    alvedon.repeats = "3";
    alvedon.numberOfPackages = "2";
    alvedon.packageSize = "20 st";
    alvedon.dosage = "1 vid behov";
    ProductFields withoutSize = product("7_2", "A");
    withoutSize.packageSize.reset();
    ProductFields emptySize = product("7_3", "B");
    emptySize.numberOfPackages = "2";
    emptySize.packageSize = "";

    const MedicationOverview view =
        FillFlexGrid(patient({alvedon, withoutSize, emptySize}), true, 14);

    ASSERT_FALSE(view.failure) << view.failure->description();
    EXPECT_TRUE(view.cleared);
    EXPECT_EQ(view.txtPnr, "191212121212");
    EXPECT_EQ(view.txtFName, "Tolvan Tolvansson");
    ASSERT_EQ(view.rows.size(), 3u);
    const auto &cells = view.rows[0].cells;
    EXPECT_EQ(cells[3].text, "Alvedon Filmdragerad tablett 500 mg Orion Pharma");
    EXPECT_EQ(cells[4].text, "2026-01-10T09:30:00");
    EXPECT_EQ(cells[5].text, "3 ggr");
    EXPECT_EQ(cells[6].text, "2 X 20 st");
    EXPECT_EQ(cells[7].text, "7_1");
    EXPECT_EQ(cells[8].text, "N02BE01");
    EXPECT_EQ(cells[9].text, "R7_1");
    EXPECT_EQ(cells[10].text, "1 vid behov");
    EXPECT_EQ(column(view, medication_grid::Packages),
              (std::vector<std::string>{"2 X 20 st", "", "2 X "}));

    // Icons sit right-bottom as designed; the repeats are centred, all else left.
    EXPECT_EQ(cells[0].alignment, 8);
    EXPECT_EQ(cells[2].alignment, 8);
    EXPECT_EQ(cells[5].alignment, 4);
    EXPECT_EQ(cells[3].alignment, 1);
    EXPECT_EQ(cells[10].alignment, 1);

    // The grid keeps its 14 rows, the current cell is on the last row written.
    EXPECT_EQ(view.gridRows, 14);
    EXPECT_EQ(view.currentRow, 3);

    const auto &layout = FlexGridLayout();
    EXPECT_EQ(layout[10].heading, "                       Dosering");
    EXPECT_EQ(layout[7].heading, " ID");
    EXPECT_EQ(layout[7].width, 0);
    EXPECT_EQ(layout[3].heading, "Läkemedel");
    EXPECT_EQ(layout[6].heading, "Förpack.");
    EXPECT_EQ(layout[1].colAlignment, 4);
    EXPECT_TRUE(layout[0].heading.empty());
}

TEST_F(MedicationOverviewTest, FillFlexGrid_shows_warning_note_history_and_tick_icons) {
    ProductFields warningAndNote = product("1", "A");
    warningAndNote.allergic = "1";
    warningAndNote.note = "Utslag";
    ProductFields historyAndNote = product("2", "B");
    historyAndNote.allergicHistory = "1";
    historyAndNote.note = "Yrsel";
    ProductFields plain = product("3", "C");
    ProductFields past = product("4", "D", "0");

    const MedicationOverview view =
        FillFlexGrid(patient({warningAndNote, historyAndNote, plain, past}), true, 14);

    ASSERT_FALSE(view.failure);
    EXPECT_EQ(pictures(view, 0), (std::vector<int>{0, 7, 0, 0}));
    EXPECT_EQ(pictures(view, 1), (std::vector<int>{3, 6, 0, 0}));
    EXPECT_EQ(pictures(view, 2), (std::vector<int>{1, 1, 1, 2}));
    EXPECT_EQ(view.standingButton, ExtendedInfoButton::cmdExtInfo);
}

TEST_F(MedicationOverviewTest, FillFlexGrid_colours_current_rows_that_share_an_ATC_code) {
    const MedicationOverview view = FillFlexGrid(
        patient({product("1", "N02BE01"), product("2", "C07AB02"), product("3", "N02BE01"),
                 product("4", "C07AB02", "0"), product("5", ""), product("6", "")}),
        true, 14);

    ASSERT_FALSE(view.failure);
    // Past products stand below all current ones.
    EXPECT_EQ(column(view, medication_grid::ID),
              (std::vector<std::string>{"1", "2", "3", "5", "6", "4"}));
    for (int row : {0, 2, 3, 4}) {
        for (const GridCell &cell : view.rows[row].cells) {
            EXPECT_EQ(cell.foreColor, Red) << "row " << row + 1;
        }
    }
    // A past product of the same code as a current one stays black, and so does that one.
    for (int row : {1, 5}) {
        for (const GridCell &cell : view.rows[row].cells) {
            EXPECT_FALSE(cell.foreColor) << "row " << row + 1;
        }
    }
}

// The grid compared the current rows pair by pair and painted both rows of every pair that
// matched; its current row stayed on the later row of the last such pair.
TEST_F(MedicationOverviewTest, FillFlexGrid_leaves_the_current_row_where_the_last_pair_matched) {
    const struct {
        const char *name;
        std::vector<std::string> codes;
        std::vector<bool> red;
        int currentRow;
    } cases[] = {
        {"no twins: the last row written", {"A", "B", "C"}, {false, false, false}, 3},
        {"an inner pair after an outer one",
         {"A", "B", "B", "A", "C"},
         {true, true, true, true, false},
         3},
        {"three of a code",
         {"A", "B", "A", "B", "A", "C"},
         {true, true, true, true, true, false},
         5},
        {"empty codes are twins", {"", "A", ""}, {true, false, true}, 3},
    };
    for (const auto &each : cases) {
        std::vector<ProductFields> products;
        for (size_t i = 0; i < each.codes.size(); ++i) {
            products.push_back(product(std::to_string(i + 1), each.codes[i]));
        }
        const MedicationOverview view = FillFlexGrid(patient(products), false, 14);
        ASSERT_FALSE(view.failure) << each.name;
        std::vector<bool> red;
        for (const MedicationRow &row : view.rows) {
            red.push_back(row.cells[medication_grid::Product].foreColor == Red);
        }
        EXPECT_EQ(red, each.red) << each.name;
        EXPECT_EQ(view.currentRow, each.currentRow) << each.name;
    }
}

TEST_F(MedicationOverviewTest,
       FillFlexGrid_hides_past_products_unless_all_are_shown_and_counts_their_warnings) {
    ProductFields pastWithWarning = product("9", "A", "0");
    pastWithWarning.allergic = "1";
    const auto document = patient({product("1", "B"), pastWithWarning, product("2", "C")});

    const MedicationOverview current = FillFlexGrid(document, false, 14);
    EXPECT_EQ(column(current, medication_grid::ID), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(current.standingButton, ExtendedInfoButton::cmdExtInfo);

    const MedicationOverview all = FillFlexGrid(document, true, 14);
    EXPECT_EQ(column(all, medication_grid::ID), (std::vector<std::string>{"1", "2", "9"}));
    EXPECT_EQ(all.standingButton, ExtendedInfoButton::cmdExtInfo);

    const MedicationOverview none = FillFlexGrid(patient({product("1", "B")}), true, 14);
    EXPECT_EQ(none.standingButton, ExtendedInfoButton::cmdNote);

    // A hand-edited product with a Checked of each kind stands among the current and the past.
    std::string twice = support::patientText("191212121212", "Tolvansson", "Tolvan",
                                             {product("1", "B"), product("2", "C")});
    const std::string tick = "<Checked>1</Checked>";
    twice.replace(twice.find(tick), tick.size(), "<Checked>0</Checked>" + tick);
    platform::XmlDocument handEdited;
    ASSERT_TRUE(handEdited.loadXML(twice));
    EXPECT_EQ(column(FillFlexGrid(handEdited, true, 14), medication_grid::ID),
              (std::vector<std::string>{"1", "2", "1"}));
}

TEST_F(MedicationOverviewTest, FillFlexGrid_of_a_patient_without_medication_leaves_blank_rows) {
    const MedicationOverview view = FillFlexGrid(patient({}), true, 14);
    ASSERT_FALSE(view.failure);
    EXPECT_TRUE(view.cleared);
    EXPECT_TRUE(view.rows.empty());
    EXPECT_EQ(view.gridRows, 14);
    EXPECT_EQ(view.currentRow, 0);
    EXPECT_EQ(view.standingButton, ExtendedInfoButton::cmdNote);
}

TEST_F(MedicationOverviewTest, FillFlexGrid_grows_the_grid_and_never_shrinks_it) {
    std::vector<ProductFields> twenty;
    for (int i = 0; i < 20; ++i) {
        twenty.push_back(product(std::to_string(i), std::to_string(i), i < 3 ? "1" : "0"));
    }
    const auto document = patient(twenty);

    const MedicationOverview all = FillFlexGrid(document, true, medication_grid::RowsAtStart);
    EXPECT_EQ(all.rows.size(), 20u);
    EXPECT_EQ(all.gridRows, 21);

    const MedicationOverview current = FillFlexGrid(document, false, all.gridRows);
    EXPECT_EQ(current.rows.size(), 3u);
    EXPECT_EQ(current.gridRows, 21);
}

TEST_F(MedicationOverviewTest, FillFlexGrid_stops_at_a_row_that_lacks_an_element) {
    ProductFields withoutForm = product("2", "B");
    withoutForm.omitted = {"Form"};
    withoutForm.allergicHistory = "1";
    ProductFields emptyFlag = product("3", "C");
    emptyFlag.allergic = "";

    const MedicationOverview view =
        FillFlexGrid(patient({product("1", "A"), withoutForm, product("3", "C")}), true, 14);

    ASSERT_TRUE(view.failure);
    EXPECT_EQ(view.failure->number(), runtime::ObjectNotSet);
    ASSERT_EQ(view.rows.size(), 2u);
    EXPECT_EQ(view.rows[0].cells[3].text, "Alvedon Tablett 500 mg Orion");
    // The broken row has its icons and the formatted but empty name cell, nothing further.
    EXPECT_EQ(view.rows[1].cells[0].picture, 7);
    EXPECT_EQ(view.rows[1].cells[2].picture, 1);
    EXPECT_EQ(view.rows[1].cells[3].alignment, 1);
    EXPECT_EQ(view.rows[1].cells[3].text, "");
    EXPECT_FALSE(view.rows[1].cells[4].alignment);
    EXPECT_FALSE(view.standingButton);

    // An empty flag is a failure, not a "no".
    const MedicationOverview flagged = FillFlexGrid(patient({emptyFlag}), true, 14);
    ASSERT_TRUE(flagged.failure);
    EXPECT_EQ(flagged.failure->number(), runtime::TypeMismatch);
}

TEST_F(MedicationOverviewTest, ReadPatientFolder_reads_the_file_and_translates_a_missing_one) {
    support::storePatientFile(
        "191212121212.XML",
        support::patientText("191212121212", "Tolvansson", "Tolvan", {product("1", "A")}));
    const MedicationOverview view = ReadPatientFolder("191212121212", true, 14);
    ASSERT_FALSE(view.failure);
    EXPECT_EQ(column(view, medication_grid::ID), (std::vector<std::string>{"1"}));

    const MedicationOverview missing = ReadPatientFolder("202002022222", true, 14);
    ASSERT_TRUE(missing.failure);
    EXPECT_EQ(missing.failure->number(), static_cast<int32_t>(0x80040207));
    EXPECT_EQ(missing.failure->description(), "Patientens fil saknas.");
    EXPECT_FALSE(missing.cleared);

    support::writeBytes(session().gDataPath + "1.xml", support::scrambleBytes("<Patient>"));
    const MedicationOverview damaged = ReadPatientFolder("1", true, 14);
    ASSERT_TRUE(damaged.failure);
    EXPECT_EQ(damaged.failure->number(), static_cast<int32_t>(0x80040204));
    EXPECT_EQ(damaged.failure->description().rfind("Patientfil är skadad.\r\nAnledning: ", 0), 0u);
    EXPECT_FALSE(damaged.cleared);
    EXPECT_FALSE(damaged.txtPnr);
}

} // namespace

#include "core/mirelo_error.h"
#include "gui_application.h"
#include "platform/gui/flex_grid.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

using mirelo::platform::FlexGrid;

namespace {

class FlexGridTest : public ::testing::Test {
  protected:
    void SetUp() override {
        mirelo::testing::ensureGuiApplication();
        owned = std::make_unique<FlexGrid>();
        grid = owned.get();
        grid->resize(600, 300);
        grid->setCols(5);
        grid->setRows(4);
        grid->setFixedRows(1);
        grid->setFixedCols(2);
        grid->setImageList({QPixmap(15, 14), QPixmap(15, 14)});
        grid->show();
    }

    void click(int row, int col) {
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                          grid->visualItemRect(grid->item(row, col)).center());
    }

    std::unique_ptr<FlexGrid> owned;
    FlexGrid *grid = nullptr;
};

TEST_F(FlexGridTest,
       moves_by_the_program_raise_nothing_and_a_click_raises_SelChange_then_MouseDown) {
    QStringList events;
    QObject::connect(grid, &FlexGrid::SelChange, [&] {
        events << QStringLiteral("SelChange %1,%2").arg(grid->Row()).arg(grid->Col());
    });
    QObject::connect(grid, &FlexGrid::MouseDown, [&](int button) {
        events << QStringLiteral("MouseDown %1 at %2,%3")
                      .arg(button)
                      .arg(grid->MouseRow())
                      .arg(grid->MouseCol());
    });
    grid->setRow(2);
    grid->setCol(3);
    grid->setColSel(4);
    grid->setTextMatrix(1, 2, QStringLiteral("x"));
    EXPECT_TRUE(events.isEmpty());

    click(1, 3);
    EXPECT_EQ(events, QStringList({"SelChange 1,3", "MouseDown 1 at 1,3"}));

    // A click in a fixed column makes the clicked row current before MouseDown.
    events.clear();
    click(3, 0);
    EXPECT_EQ(events, QStringList({"SelChange 3,2", "MouseDown 1 at 3,0"}));
    EXPECT_EQ(grid->Row(), 3);
}

TEST_F(FlexGridTest, Clear_keeps_rows_and_widths_and_a_hidden_column_still_holds_text) {
    grid->setColWidth(3, 0);
    grid->setColWidth(4, 1500);
    grid->setTextMatrix(2, 3, QStringLiteral("S1_1"));
    grid->setCellPictureAt(2, 2, 1);
    grid->setCellForeColorAt(2, 4, QColor(255, 0, 0));
    EXPECT_TRUE(grid->isColumnHidden(3));
    EXPECT_EQ(grid->TextMatrix(2, 3), "S1_1");
    EXPECT_EQ(grid->CellPictureAt(2, 2), 1);

    grid->Clear();
    EXPECT_EQ(grid->Rows(), 4);
    EXPECT_EQ(grid->ColWidth(4), 1500);
    EXPECT_EQ(grid->columnWidth(4), 100);
    EXPECT_EQ(grid->TextMatrix(2, 3), "");
    EXPECT_EQ(grid->CellPictureAt(2, 2), 0);
    EXPECT_NE(grid->CellForeColorAt(2, 4), QColor(255, 0, 0));

    grid->AddItem(QStringLiteral("a\tb\tc"));
    EXPECT_EQ(grid->Rows(), 5);
    EXPECT_EQ(grid->TextMatrix(4, 2), "c");
    EXPECT_THROW(grid->setRow(5), mirelo::MireloError);
}

} // namespace

#include "core/mirelo_error.h"
#include "gui_application.h"
#include "platform/gui/flex_grid.h"
#include "platform/gui/image_list.h"
#include "screens/screen_resources.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

using mirelo::MireloError;
using mirelo::platform::FlexGrid;
using mirelo::platform::ImageList;

namespace {

class FlexGridTest : public ::testing::Test {
  protected:
    void SetUp() override {
        mirelo::testing::ensureGuiApplication();
        mirelo::screens::ensureScreenResources();
        owned = std::make_unique<FlexGrid>();
        grid = owned.get();
        grid->resize(600, 300);
        grid->setCols(5);
        grid->setRows(4);
        grid->setFixedRows(1);
        grid->setFixedCols(2);
        grid->setImageList(ImageList::FromFiles(QStringLiteral(":/icons/imagelist1_%1.svg"), 7));
        grid->show();
        QObject::connect(grid, &FlexGrid::SelChange, [this] {
            events << QStringLiteral("SelChange %1,%2-%3")
                          .arg(grid->Row())
                          .arg(grid->Col())
                          .arg(grid->ColSel());
        });
        QObject::connect(grid, &FlexGrid::MouseDown, [this](int button, int shift) {
            events << QStringLiteral("MouseDown %1 %2 at %3,%4 current %5,%6")
                          .arg(button)
                          .arg(shift)
                          .arg(grid->MouseRow())
                          .arg(grid->MouseCol())
                          .arg(grid->Row())
                          .arg(grid->Col());
        });
    }

    QPoint centre(int row, int col) const {
        return grid->visualItemRect(grid->item(row, col)).center();
    }

    void click(int row, int col, Qt::KeyboardModifiers keys = {}) {
        QTest::mouseClick(grid->viewport(), Qt::LeftButton, keys, centre(row, col));
    }

    // Sends what the window system sends, with the time of each event in milliseconds.
    void send(QEvent::Type type, QPoint at, quint64 time, Qt::MouseButton button = Qt::LeftButton) {
        const Qt::MouseButtons held =
            type == QEvent::MouseButtonRelease || type == QEvent::MouseMove ? Qt::NoButton : button;
        QMouseEvent event(type, at, grid->viewport()->mapToGlobal(at), button, held, {});
        event.setTimestamp(time);
        QApplication::sendEvent(grid->viewport(), &event);
    }

    std::unique_ptr<FlexGrid> owned;
    FlexGrid *grid = nullptr;
    QStringList events;
};

TEST_F(FlexGridTest,
       moves_by_the_program_raise_nothing_and_a_click_raises_SelChange_then_MouseDown) {
    grid->setRow(2);
    grid->setCol(3);
    grid->setColSel(4);
    grid->setHighLight(1);
    grid->setTextMatrix(1, 2, QStringLiteral("x"));
    grid->AddItem(QStringLiteral("a"));
    grid->Clear();
    EXPECT_TRUE(events.isEmpty());
    EXPECT_EQ(grid->MouseRow(), 0);
    EXPECT_EQ(grid->MouseCol(), 0);

    // In the list's cells MouseDown comes first, and the click's own move after it.
    click(1, 3, Qt::ControlModifier);
    EXPECT_EQ(events, QStringList({"MouseDown 1 2 at 1,3 current 2,3", "SelChange 1,3-3"}));

    // The same cell again changes no selection: only the mouse event comes.
    events.clear();
    click(1, 3);
    EXPECT_EQ(events, QStringList({"MouseDown 1 0 at 1,3 current 1,3"}));

    // The heading row moves nothing.
    events.clear();
    QTest::mouseClick(grid->viewport(), Qt::RightButton, {}, centre(0, 4));
    EXPECT_EQ(events, QStringList({"MouseDown 2 0 at 0,4 current 1,3"}));
}

TEST_F(FlexGridTest, a_click_in_a_fixed_column_marks_the_clicked_row_before_MouseDown) {
    grid->setRow(1);
    click(3, 0);
    EXPECT_EQ(events, QStringList({"SelChange 3,2-4", "MouseDown 1 0 at 3,0 current 3,2"}));
    const QList<QTableWidgetSelectionRange> marked = grid->selectedRanges();
    ASSERT_EQ(marked.size(), 1);
    EXPECT_EQ(marked[0].topRow(), 3);
    EXPECT_EQ(marked[0].bottomRow(), 3);
    EXPECT_EQ(marked[0].leftColumn(), 2);
    EXPECT_EQ(marked[0].rightColumn(), 4);

    grid->setHighLight(0);
    EXPECT_TRUE(grid->selectedRanges().isEmpty());
}

TEST_F(FlexGridTest, a_double_click_is_one_MouseDown_and_the_pointer_sets_MouseRow) {
    const QPoint tickBox = centre(2, 2);
    send(QEvent::MouseMove, centre(3, 4), 1000);
    EXPECT_EQ(grid->MouseRow(), 3);
    EXPECT_EQ(grid->MouseCol(), 4);
    EXPECT_TRUE(events.isEmpty());

    send(QEvent::MouseButtonPress, tickBox, 2000);
    send(QEvent::MouseButtonRelease, tickBox, 2050);
    send(QEvent::MouseButtonPress, tickBox, 2150);
    send(QEvent::MouseButtonDblClick, tickBox, 2150);
    send(QEvent::MouseButtonRelease, tickBox, 2200);
    EXPECT_EQ(events, QStringList({"MouseDown 1 0 at 2,2 current 0,0", "SelChange 2,2-2"}));

    // A third press soon after is a click of its own.
    send(QEvent::MouseButtonPress, tickBox, 2300);
    EXPECT_EQ(events.size(), 3);
}

TEST_F(FlexGridTest, Clear_keeps_rows_widths_and_column_alignment_and_drops_the_cells_state) {
    grid->setColWidth(3, 0);
    grid->setColWidth(4, 1500);
    grid->setColAlignment(4, FlexGrid::AlignCenterCenter);
    grid->setRowHeightTwips(2, grid->RowHeight(2) * 3);
    const int tallRow = grid->RowHeight(2);
    grid->setTextMatrix(2, 3, QStringLiteral("S1_1"));
    grid->setCellPictureAt(2, 1, 6);
    grid->setCellForeColorAt(2, 4, QColor(255, 0, 0));
    grid->setRow(0);
    grid->setCol(4);
    grid->setCellFontBold(true);
    grid->setCellAlignment(FlexGrid::AlignLeftCenter);
    grid->setText(QStringLiteral("Exp."));

    // A hidden column still holds its text.
    EXPECT_TRUE(grid->isColumnHidden(3));
    EXPECT_EQ(grid->ColWidth(3), 0);
    EXPECT_EQ(grid->TextMatrix(2, 3), "S1_1");
    EXPECT_EQ(grid->CellAlignmentAt(1, 4), FlexGrid::AlignCenterCenter);
    EXPECT_EQ(grid->CellAlignmentAt(0, 4), FlexGrid::AlignLeftCenter);
    EXPECT_TRUE(grid->CellFontBoldAt(0, 4));

    grid->Clear();
    EXPECT_EQ(grid->Rows(), 4);
    EXPECT_EQ(grid->ColWidth(4), 1500);
    EXPECT_EQ(grid->columnWidth(4), 100);
    EXPECT_TRUE(grid->isColumnHidden(3));
    EXPECT_EQ(grid->RowHeight(2), tallRow);
    EXPECT_EQ(grid->TextMatrix(2, 3), "");
    EXPECT_EQ(grid->TextMatrix(0, 4), "");
    EXPECT_EQ(grid->CellPictureAt(2, 1), 0);
    EXPECT_NE(grid->CellForeColorAt(2, 4), QColor(255, 0, 0));
    EXPECT_FALSE(grid->CellFontBoldAt(0, 4));
    EXPECT_EQ(grid->CellAlignmentAt(0, 4), FlexGrid::AlignCenterCenter);

    grid->setColWidth(3, 450);
    EXPECT_FALSE(grid->isColumnHidden(3));
    EXPECT_EQ(grid->columnWidth(3), 30);
}

TEST_F(FlexGridTest, AddItem_fills_a_new_last_row_from_tab_separated_text) {
    grid->AddItem(QStringLiteral("\t\tAlvedon\t\t2 X 20\tspill"));
    grid->AddItem(QString());
    EXPECT_EQ(grid->Rows(), 6);
    EXPECT_EQ(grid->TextMatrix(4, 2), "Alvedon");
    EXPECT_EQ(grid->TextMatrix(4, 4), "2 X 20");
    EXPECT_EQ(grid->TextMatrix(5, 2), "");
    grid->setRow(5);
    EXPECT_EQ(grid->Row(), 5);

    try {
        grid->setRow(6);
        FAIL() << "a row past the last was accepted";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), 30009);
    }
    try {
        grid->setCol(5);
        FAIL() << "a column past the last was accepted";
    } catch (const MireloError &error) {
        EXPECT_EQ(error.number(), 30010);
    }
}

TEST_F(FlexGridTest, a_cells_picture_is_an_image_of_the_list_drawn_whole_in_its_cell) {
    const ImageList &list = grid->imageList();
    ASSERT_EQ(list.Count(), 7);
    const QList<QSize> sizes = {{15, 14}, {15, 14}, {12, 13}, {12, 12},
                                {12, 12}, {13, 13}, {13, 13}};
    for (int number = 1; number <= 7; ++number) {
        EXPECT_EQ(list.ListImage(number).size(), sizes[number - 1]) << "image " << number;
        EXPECT_EQ(list.ListImage(number).toImage().pixelColor(0, 0), QColor(224, 224, 224))
            << "image " << number;
    }
    EXPECT_THROW(list.ListImage(8), MireloError);
    EXPECT_THROW(grid->setCellPictureAt(1, 2, 8), MireloError);

    grid->setColWidth(1, 200);
    grid->setRow(3);
    grid->setCol(1);
    grid->setCellPicture(3);
    EXPECT_EQ(grid->CellPictureAt(3, 1), 3);
    EXPECT_EQ(grid->CellPictureAt(2, 1), 0);

    // The warning triangle stands whole in the middle of its narrow fixed column.
    const QImage drawn = grid->viewport()->grab().toImage();
    const QImage triangle = list.ListImage(3).toImage().convertToFormat(drawn.format());
    QRect target(QPoint(), triangle.size());
    target.moveCenter(grid->visualItemRect(grid->item(3, 1)).center());
    EXPECT_EQ(drawn.copy(target), triangle);

    const ImageList extended =
        ImageList::FromFiles(QStringLiteral(":/icons/extendedinfo_%1.svg"), 3);
    for (int number = 1; number <= 3; ++number) {
        EXPECT_EQ(extended.ListImage(number).size(), QSize(12, 13));
    }
    EXPECT_THROW(ImageList::FromFiles(QStringLiteral(":/icons/missing_%1.svg"), 1), MireloError);
}

TEST_F(FlexGridTest, the_fixed_row_and_columns_stay_in_view_while_the_list_scrolls) {
    grid->setRows(40);
    for (int col = 2; col < 5; ++col) {
        grid->setColWidth(col, 3000);
        grid->setTextMatrix(0, col, QStringLiteral("Rubrik %1").arg(col));
    }
    for (int row = 1; row < 40; ++row) {
        grid->setCellPictureAt(row, 1, 6);
        grid->setTextMatrix(row, 2, QString::number(row));
    }
    const int top = grid->rowHeight(0);
    const int left = grid->columnWidth(0) + grid->columnWidth(1);
    const auto picture = [this] { return grid->viewport()->grab().toImage(); };
    const QImage before = picture();
    grid->verticalScrollBar()->setValue(grid->verticalScrollBar()->maximum());
    const QImage down = picture();
    const QRect rowBand(0, 0, before.width(), top);
    EXPECT_EQ(down.copy(rowBand), before.copy(rowBand));
    EXPECT_NE(down, before);
    grid->horizontalScrollBar()->setValue(grid->horizontalScrollBar()->maximum());
    const QImage across = picture();
    const QRect colBand(0, 0, left, before.height());
    EXPECT_EQ(across.copy(colBand), down.copy(colBand));
    EXPECT_NE(across, down);

    click(0, 4);
    ASSERT_FALSE(events.isEmpty());
    EXPECT_EQ(events.last(), "MouseDown 1 0 at 0,4 current 0,0");

    // The keyboard brings a row out from under the fixed row.
    grid->setRow(30);
    grid->setCol(2);
    QTest::keyClick(grid, Qt::Key_Home);
    EXPECT_EQ(grid->Row(), 1);
    EXPECT_GE(grid->visualRect(grid->model()->index(1, 2)).top(), top);
}

TEST_F(FlexGridTest, a_long_text_is_cut_at_the_cells_edge_without_dots_and_is_its_tooltip) {
    const QString stamp = QStringLiteral("2026-11-23 14:30:00 och mer därtill");
    grid->setColWidth(3, 1080);
    grid->setTextMatrix(1, 3, stamp);
    EXPECT_EQ(grid->item(1, 3)->toolTip(), stamp);
    const auto drawn = [this](int width) {
        QRect cell = grid->visualRect(grid->model()->index(1, 3));
        cell.setWidth(width);
        return grid->viewport()->grab().toImage().copy(cell);
    };
    const int narrow = grid->visualRect(grid->model()->index(1, 3)).width();
    const QImage cut = drawn(narrow);
    grid->setColWidth(3, 6000);
    EXPECT_EQ(cut, drawn(narrow));

    // Wrapped in a row too low for all its lines, the text shows the lines that fit as if they
    // were all there is, without dots at the end of the last.
    QFont small = grid->font();
    small.setPointSizeF(7.5);
    grid->setFont(small);
    grid->setWordWrap(true);
    grid->setColWidth(3, 1930);
    const int column = grid->visualRect(grid->model()->index(1, 3)).width();
    grid->setTextMatrix(1, 3, QStringLiteral("Dr. Karin Lindqvist,"));
    const QImage firstLineAlone = drawn(column);
    grid->setTextMatrix(1, 3, QStringLiteral("Dr. Karin Lindqvist, Vårdcentralen Åby"));
    EXPECT_EQ(drawn(column), firstLineAlone);
}

} // namespace

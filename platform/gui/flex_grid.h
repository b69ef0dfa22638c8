#pragma once

#include "platform/gui/image_list.h"

#include <QColor>
#include <QMap>
#include <QTableWidget>
#include <functional>

class QPainter;

namespace mirelo::platform {

// The grid the screens are written against. It keeps the state model they depend on: a
// current row and column, a selection that runs from the current column to ColSel, fixed rows
// and columns, pictures from an image list, and the cell under the mouse. SelChange and
// MouseDown are raised for the user only: moves made by the program raise nothing. A click in
// a fixed column marks the clicked row before MouseDown; a click in the list's cells raises
// MouseDown first and then moves, unless the handler has moved the current cell itself.
// Widths and heights are in twips, 15 to the pixel, as the screens' layouts are.
class FlexGrid : public QTableWidget {
    Q_OBJECT

  public:
    explicit FlexGrid(QWidget *parent = nullptr);

    // Alignment codes of cells and columns: left centred, centred, right at the bottom.
    static constexpr int AlignLeftCenter = 1;
    static constexpr int AlignCenterCenter = 4;
    static constexpr int AlignRightBottom = 8;

    // The row count may grow and shrink; rows added are empty. The current cell stays inside.
    int Rows() const { return rowCount(); }
    void setRows(int rows);
    int Cols() const { return columnCount(); }
    void setCols(int cols);
    int FixedRows() const { return fixedRows_; }
    void setFixedRows(int rows);
    int FixedCols() const { return fixedCols_; }
    void setFixedCols(int cols);

    // Setting the row or column makes that cell current and collapses the selection to it. A
    // row or column outside the grid fails with the grid's own numbers, 30009 and 30010.
    int Row() const { return row_; }
    void setRow(int row);
    int Col() const { return col_; }
    void setCol(int col);
    int ColSel() const { return colSel_; }
    void setColSel(int col);
    // 0 shows no selection, any other value shows it.
    int HighLight() const { return highLight_; }
    void setHighLight(int highLight);

    // The current cell's text and formats.
    QString Text() const { return TextMatrix(row_, col_); }
    void setText(const QString &text) { setTextMatrix(row_, col_, text); }
    int CellPicture() const { return CellPictureAt(row_, col_); }
    void setCellPicture(int picture) { setCellPictureAt(row_, col_, picture); }
    QColor CellForeColor() const { return CellForeColorAt(row_, col_); }
    void setCellForeColor(const QColor &color) { setCellForeColorAt(row_, col_, color); }
    int CellAlignment() const { return CellAlignmentAt(row_, col_); }
    void setCellAlignment(int alignment) { setCellAlignmentAt(row_, col_, alignment); }
    bool CellFontBold() const { return CellFontBoldAt(row_, col_); }
    void setCellFontBold(bool bold);

    // Any cell by its row and column.
    QString TextMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString &text);
    // The picture is the number of an image in the grid's image list, from 1; 0 is none. The
    // number is the cell's state, so a cell is asked which image it shows by comparing numbers.
    int CellPictureAt(int row, int col) const;
    void setCellPictureAt(int row, int col, int picture);
    QColor CellForeColorAt(int row, int col) const;
    void setCellForeColorAt(int row, int col, const QColor &color);
    // A cell without an alignment of its own takes its column's.
    int CellAlignmentAt(int row, int col) const;
    void setCellAlignmentAt(int row, int col, int alignment);
    bool CellFontBoldAt(int row, int col) const;

    // 0 hides the column; its cells are still read and written.
    int ColWidth(int col) const;
    void setColWidth(int col, int twips);
    int ColAlignment(int col) const;
    void setColAlignment(int col, int alignment);
    int RowHeight(int row) const;
    void setRowHeightTwips(int row, int twips);

    // The cell under the mouse when it last moved over the grid or pressed a button there;
    // 0 and 0 before the mouse has been on the grid.
    int MouseRow() const { return mouseRow_; }
    int MouseCol() const { return mouseCol_; }

    // Empties every cell of text, picture and format; rows, columns and widths stay.
    void Clear();
    // Runs cell writes (texts, pictures, formats; not the row or column count) and lets the
    // view hear of them once at the end rather than once per cell and property: a list of a
    // thousand products is written in one go.
    void writeCellsTogether(const std::function<void()> &writes);
    // A new last row, its cells taken from the tab-separated text.
    void AddItem(const QString &tabSeparated);

    // The fixed rows and columns stand where they were designed to be, whatever the scrolling.
    QRect visualRect(const QModelIndex &index) const override;
    QModelIndex indexAt(const QPoint &at) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;

    void setImageList(ImageList images) { images_ = std::move(images); }
    const ImageList &imageList() const { return images_; }

  signals:
    void SelChange();
    // Button 1 left, 2 right, 4 middle; shift 1, control 2, alt 4 added up; x and y in twips.
    void MouseDown(int button, int shift, int x, int y);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

  private:
    QTableWidgetItem *cell(int row, int col);
    const QTableWidgetItem *cellOrNull(int row, int col) const;
    void requireCell(int row, int col) const;
    void createCells(int fromRow, int fromCol);
    void showSelection(bool movedByUser = false);
    void settleLayout();
    void alignListUnderFixedRows();
    void moveByUser(int row, int col, int colSel);
    void noteMousePosition(const QPoint &at);
    bool isSecondPressOfDoubleClick(const QMouseEvent *event);
    void fitRowsToFont();
    int fixedHeight() const;
    int fixedWidth() const;
    int rowsPerPage() const;
    void paintFixedCells(QPainter &painter, const QRect &band,
                         const std::function<bool(int, int)> &inBand);

    int fixedRows_ = 1;
    int fixedCols_ = 1;
    int row_ = 0;
    int col_ = 0;
    int colSel_ = 0;
    int highLight_ = 1;
    // Counts the moves made by the program, to tell whether a MouseDown handler moved.
    quint64 programMoves_ = 0;
    int mouseRow_ = 0;
    int mouseCol_ = 0;
    QMap<int, int> colWidths_;
    QMap<int, int> colAlignments_;
    ImageList images_;

    // The previous press, to tell the second press of a double click from a click of its own.
    quint64 lastPressTime_ = 0;
    QPointF lastPressPosition_;
    Qt::MouseButton lastPressButton_ = Qt::NoButton;
};

} // namespace mirelo::platform

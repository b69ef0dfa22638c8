#pragma once

#include <QColor>
#include <QPixmap>
#include <QTableWidget>
#include <vector>

namespace mirelo::platform {

// The grid the screens are written against. It keeps the state model they depend on: a
// current row and column, a selection that runs from the current column to ColSel, fixed rows
// and columns, pictures from an image list, and the cell under the mouse. SelChange and
// MouseDown are raised for the user only: moves made by the program raise nothing.
class FlexGrid : public QTableWidget {
    Q_OBJECT

  public:
    explicit FlexGrid(QWidget *parent = nullptr);

    // Alignment codes of cells and columns: left centred, centred, right at the bottom.
    static constexpr int AlignLeftCenter = 1;
    static constexpr int AlignCenterCenter = 4;
    static constexpr int AlignRightBottom = 8;

    int Rows() const { return rowCount(); }
    void setRows(int rows);
    int Cols() const { return columnCount(); }
    void setCols(int cols);
    int FixedRows() const { return fixedRows_; }
    void setFixedRows(int rows);
    int FixedCols() const { return fixedCols_; }
    void setFixedCols(int cols);

    // Setting the row or column makes that cell current and collapses the selection to it. A
    // row or column outside the grid fails.
    int Row() const { return row_; }
    void setRow(int row);
    int Col() const { return col_; }
    void setCol(int col);
    int ColSel() const { return colSel_; }
    void setColSel(int col);
    int HighLight() const { return highLight_; }
    void setHighLight(int highLight);

    // The current cell's text and formats.
    QString Text() const { return TextMatrix(row_, col_); }
    void setText(const QString &text) { setTextMatrix(row_, col_, text); }
    void setCellFontBold(bool bold);
    void setCellAlignment(int alignment) { setCellAlignmentAt(row_, col_, alignment); }

    QString TextMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString &text);
    // Pictures are numbered by their place in the image list, from 1; 0 is no picture.
    int CellPictureAt(int row, int col) const;
    void setCellPictureAt(int row, int col, int picture);
    void setCellForeColorAt(int row, int col, const QColor &color);
    QColor CellForeColorAt(int row, int col) const;
    void setCellAlignmentAt(int row, int col, int alignment);
    int CellAlignmentAt(int row, int col) const;
    bool CellFontBoldAt(int row, int col) const;

    // Widths in twips; 0 hides the column, whose cells are still read and written.
    int ColWidth(int col) const { return colWidths_.value(col, 0); }
    void setColWidth(int col, int twips);
    void setColAlignment(int col, int alignment);

    int MouseRow() const { return mouseRow_; }
    int MouseCol() const { return mouseCol_; }

    // Empties every cell of text, picture and format; rows, columns and widths stay.
    void Clear();
    // A new last row, its cells taken from the tab-separated text.
    void AddItem(const QString &tabSeparated);

    void setImageList(std::vector<QPixmap> images);

  signals:
    void SelChange();
    void MouseDown(int button, int shift, int x, int y);

  protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    QTableWidgetItem *cell(int row, int col);
    const QTableWidgetItem *cellOrNull(int row, int col) const;
    void requireCell(int row, int col) const;
    void paintFixedArea();
    void showSelection();
    void moveByUser(int row, int col);

    int fixedRows_ = 1;
    int fixedCols_ = 1;
    int row_ = 0;
    int col_ = 0;
    int colSel_ = 0;
    int highLight_ = 1;
    int mouseRow_ = 0;
    int mouseCol_ = 0;
    QMap<int, int> colWidths_;
    QMap<int, int> colAlignments_;
    std::vector<QPixmap> images_;
};

} // namespace mirelo::platform

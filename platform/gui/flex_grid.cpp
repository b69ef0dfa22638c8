#include "platform/gui/flex_grid.h"

#include "core/mirelo_error.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace mirelo::platform {
namespace {

// The grid's own numbers for a row or column that isn't there.
constexpr int InvalidRowValue = 30009;
constexpr int InvalidColValue = 30010;

constexpr int PictureRole = Qt::UserRole + 1;
constexpr int CellAlignmentRole = Qt::UserRole + 2;
constexpr int TwipsPerPixel = 15;

const QColor FixedAreaColor(224, 224, 224);

Qt::Alignment qtAlignment(int code) {
    switch (code) {
    case FlexGrid::AlignCenterCenter:
        return Qt::AlignCenter;
    case FlexGrid::AlignRightBottom:
        return Qt::AlignRight | Qt::AlignBottom;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

// The icon columns are barely wider than their pictures, so a picture is drawn whole in the
// middle of its cell rather than beside the text as a list item's icon would be.
class PictureDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        const QVariant picture = index.data(Qt::DecorationRole);
        if (!picture.isValid()) {
            QStyledItemDelegate::paint(painter, option, index);
            return;
        }
        QStyleOptionViewItem withoutPicture = option;
        initStyleOption(&withoutPicture, index);
        withoutPicture.features &= ~QStyleOptionViewItem::HasDecoration;
        withoutPicture.icon = QIcon();
        QStyledItemDelegate::paint(painter, withoutPicture, QModelIndex());
        painter->fillRect(option.rect, index.data(Qt::BackgroundRole).value<QBrush>());
        const QPixmap pixmap = picture.value<QPixmap>();
        QRect target = pixmap.rect();
        target.moveCenter(option.rect.center());
        painter->drawPixmap(target, pixmap);
    }
};

} // namespace

FlexGrid::FlexGrid(QWidget *parent) : QTableWidget(parent) {
    setItemDelegate(new PictureDelegate(this));
    horizontalHeader()->hide();
    horizontalHeader()->setMinimumSectionSize(0);
    verticalHeader()->hide();
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setFocusPolicy(Qt::StrongFocus);
    setWordWrap(false);
    setStyleSheet(QStringLiteral("QTableWidget { gridline-color: rgb(192, 192, 192); "
                                 "background-color: rgb(224, 224, 224); }"));
    QPalette colours = palette();
    colours.setColor(QPalette::Base, FixedAreaColor);
    setPalette(colours);
}

void FlexGrid::setRows(int rows) {
    const int before = rowCount();
    setRowCount(rows);
    for (int row = before; row < rows; ++row) {
        for (int col = 0; col < columnCount(); ++col) {
            cell(row, col);
        }
    }
    paintFixedArea();
}

void FlexGrid::setCols(int cols) {
    const int before = columnCount();
    setColumnCount(cols);
    for (int row = 0; row < rowCount(); ++row) {
        for (int col = before; col < cols; ++col) {
            cell(row, col);
        }
    }
    paintFixedArea();
}

void FlexGrid::setFixedRows(int rows) {
    fixedRows_ = rows;
    paintFixedArea();
}

void FlexGrid::setFixedCols(int cols) {
    fixedCols_ = cols;
    paintFixedArea();
}

void FlexGrid::requireCell(int row, int col) const {
    if (row < 0 || row >= rowCount()) {
        throw MireloError(InvalidRowValue, "Ogiltigt värde för Row");
    }
    if (col < 0 || col >= columnCount()) {
        throw MireloError(InvalidColValue, "Ogiltigt värde för Col");
    }
}

QTableWidgetItem *FlexGrid::cell(int row, int col) {
    requireCell(row, col);
    QTableWidgetItem *found = item(row, col);
    if (found == nullptr) {
        found = new QTableWidgetItem();
        setItem(row, col, found);
    }
    return found;
}

const QTableWidgetItem *FlexGrid::cellOrNull(int row, int col) const {
    requireCell(row, col);
    return item(row, col);
}

void FlexGrid::setRow(int row) {
    requireCell(row, col_ < columnCount() ? col_ : 0);
    row_ = row;
    colSel_ = col_;
    showSelection();
}

void FlexGrid::setCol(int col) {
    requireCell(row_ < rowCount() ? row_ : 0, col);
    col_ = col;
    colSel_ = col;
    showSelection();
}

void FlexGrid::setColSel(int col) {
    requireCell(row_ < rowCount() ? row_ : 0, col);
    colSel_ = col;
    showSelection();
}

void FlexGrid::setHighLight(int highLight) {
    highLight_ = highLight;
    showSelection();
}

void FlexGrid::showSelection() {
    const QSignalBlocker quiet(this);
    clearSelection();
    if (highLight_ != 0 && row_ >= fixedRows_ && row_ < rowCount()) {
        setRangeSelected(QTableWidgetSelectionRange(row_, std::min(col_, colSel_), row_,
                                                    std::max(col_, colSel_)),
                         true);
    }
    if (row_ < rowCount() && col_ < columnCount()) {
        // The current row is brought into view; sideways the grid stays where the user left
        // it, so the fixed icon columns don't scroll away.
        const int across = horizontalScrollBar()->value();
        scrollToItem(item(row_, col_));
        horizontalScrollBar()->setValue(across);
    }
}

void FlexGrid::setCellFontBold(bool bold) {
    QTableWidgetItem *current = cell(row_, col_);
    QFont bolder = font();
    bolder.setBold(bold);
    current->setFont(bolder);
}

QString FlexGrid::TextMatrix(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found ? found->text() : QString();
}

void FlexGrid::setTextMatrix(int row, int col, const QString &text) {
    cell(row, col)->setText(text);
}

int FlexGrid::CellPictureAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found ? found->data(PictureRole).toInt() : 0;
}

void FlexGrid::setCellPictureAt(int row, int col, int picture) {
    QTableWidgetItem *target = cell(row, col);
    target->setData(PictureRole, picture);
    const bool known = picture >= 1 && picture <= static_cast<int>(images_.size());
    target->setData(Qt::DecorationRole, known ? QVariant(images_[picture - 1]) : QVariant());
}

void FlexGrid::setCellForeColorAt(int row, int col, const QColor &color) {
    cell(row, col)->setForeground(color);
}

QColor FlexGrid::CellForeColorAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found && found->foreground().style() != Qt::NoBrush ? found->foreground().color()
                                                               : palette().color(QPalette::Text);
}

void FlexGrid::setCellAlignmentAt(int row, int col, int alignment) {
    QTableWidgetItem *target = cell(row, col);
    target->setData(CellAlignmentRole, alignment);
    target->setTextAlignment(qtAlignment(alignment));
}

int FlexGrid::CellAlignmentAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    if (found && found->data(CellAlignmentRole).isValid()) {
        return found->data(CellAlignmentRole).toInt();
    }
    return colAlignments_.value(col, AlignLeftCenter);
}

bool FlexGrid::CellFontBoldAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found && found->font().bold();
}

void FlexGrid::setColWidth(int col, int twips) {
    requireCell(0, col);
    colWidths_[col] = twips;
    setColumnHidden(col, twips == 0);
    if (twips > 0) {
        setColumnWidth(col, (twips + TwipsPerPixel / 2) / TwipsPerPixel);
    }
}

void FlexGrid::setColAlignment(int col, int alignment) {
    requireCell(0, col);
    colAlignments_[col] = alignment;
    for (int row = 0; row < rowCount(); ++row) {
        QTableWidgetItem *target = cell(row, col);
        if (!target->data(CellAlignmentRole).isValid()) {
            target->setTextAlignment(qtAlignment(alignment));
        }
    }
}

void FlexGrid::Clear() {
    for (int row = 0; row < rowCount(); ++row) {
        for (int col = 0; col < columnCount(); ++col) {
            auto *empty = new QTableWidgetItem();
            if (colAlignments_.contains(col)) {
                empty->setTextAlignment(qtAlignment(colAlignments_.value(col)));
            }
            setItem(row, col, empty);
        }
    }
    paintFixedArea();
}

void FlexGrid::AddItem(const QString &tabSeparated) {
    const int row = rowCount();
    setRows(row + 1);
    const QStringList texts = tabSeparated.split(QLatin1Char('\t'));
    for (int col = 0; col < std::min<int>(texts.size(), columnCount()); ++col) {
        setTextMatrix(row, col, texts[col]);
    }
}

void FlexGrid::setImageList(std::vector<QPixmap> images) {
    images_ = std::move(images);
}

void FlexGrid::paintFixedArea() {
    for (int row = 0; row < rowCount(); ++row) {
        for (int col = 0; col < columnCount(); ++col) {
            QTableWidgetItem *target = cell(row, col);
            const bool fixed = row < fixedRows_ || col < fixedCols_;
            target->setBackground(fixed ? QBrush(FixedAreaColor) : QBrush(Qt::white));
        }
    }
}

void FlexGrid::mousePressEvent(QMouseEvent *event) {
    const QPoint at = event->position().toPoint();
    const int row = rowAt(at.y());
    const int col = columnAt(at.x());
    if (row < 0 || col < 0) {
        return;
    }
    mouseRow_ = row;
    mouseCol_ = col;
    setFocus(Qt::MouseFocusReason);
    if (row >= fixedRows_) {
        if (col < fixedCols_) {
            // A click in a fixed column makes the clicked row current, as the user's own move.
            moveByUser(row, fixedCols_);
        } else {
            moveByUser(row, col);
        }
    }
    const int button = event->button() == Qt::LeftButton    ? 1
                       : event->button() == Qt::RightButton ? 2
                                                            : 4;
    emit MouseDown(button, static_cast<int>(event->modifiers() >> 25), at.x(), at.y());
}

void FlexGrid::mouseDoubleClickEvent(QMouseEvent *event) {
    mousePressEvent(event);
}

void FlexGrid::moveByUser(int row, int col) {
    const bool moved = row != row_ || col != col_ || colSel_ != col;
    row_ = row;
    col_ = col;
    colSel_ = col;
    showSelection();
    if (moved) {
        emit SelChange();
    }
}

void FlexGrid::keyPressEvent(QKeyEvent *event) {
    int row = row_;
    int col = col_;
    switch (event->key()) {
    case Qt::Key_Up:
        row = std::max(fixedRows_, row - 1);
        break;
    case Qt::Key_Down:
        row = std::min(rowCount() - 1, row + 1);
        break;
    case Qt::Key_Left:
        col = std::max(fixedCols_, col - 1);
        break;
    case Qt::Key_Right:
        col = std::min(columnCount() - 1, col + 1);
        break;
    default:
        QTableWidget::keyPressEvent(event);
        return;
    }
    if (row >= fixedRows_ && col >= fixedCols_) {
        moveByUser(row, col);
    }
}

} // namespace mirelo::platform

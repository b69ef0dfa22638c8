#include "platform/gui/flex_grid.h"

#include "core/mirelo_error.h"

#include <QApplication>
#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyleHints>
#include <QStyledItemDelegate>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <functional>

namespace mirelo::platform {
namespace {

// The grid's own numbers for a row or column that isn't there.
constexpr int InvalidRowValue = 30009;
constexpr int InvalidColValue = 30010;

constexpr int PictureRole = Qt::UserRole + 1;
constexpr int CellAlignmentRole = Qt::UserRole + 2;
constexpr int TwipsPerPixel = 15;

const QColor FixedAreaColor(224, 224, 224);
const QColor GridLineColor(192, 192, 192);

int pixels(int twips) {
    return (twips + TwipsPerPixel / 2) / TwipsPerPixel;
}

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

// The start of a wrapped text up to the end of the last line that fits the cell's text area.
// The style would put dots at the end of that line; the grid cuts its texts at the edge.
QString linesThatFit(const QString &text, const QFont &font, const QRect &area) {
    QTextLayout layout(text, font);
    QTextOption wrapping;
    wrapping.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(wrapping);
    layout.beginLayout();
    qreal height = 0;
    int end = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(area.width());
        height += line.height();
        if (height > area.height() && end > 0) {
            break;
        }
        end = line.textStart() + line.textLength();
    }
    layout.endLayout();
    return text.left(end);
}

// Draws each cell from the grid's state: grey in the fixed area, the alignment of the cell or
// its column, and the picture whole in the middle of the cell. The icon columns are barely
// wider than their pictures, so a picture beside the text, as a list item's icon stands, would
// be cut off.
class CellDelegate : public QStyledItemDelegate {
  public:
    explicit CellDelegate(FlexGrid *grid) : QStyledItemDelegate(grid), grid_(grid) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        QStyledItemDelegate::paint(painter, option, index);
        const int picture = index.data(PictureRole).toInt();
        if (picture >= 1 && picture <= grid_->imageList().Count()) {
            const QPixmap &pixmap = grid_->imageList().ListImage(picture);
            QRect target = pixmap.rect();
            target.moveCenter(option.rect.center());
            painter->drawPixmap(target, pixmap);
        }
    }

  protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        const bool fixed = index.row() < grid_->FixedRows() || index.column() < grid_->FixedCols();
        option->backgroundBrush =
            fixed ? FixedAreaColor : QApplication::palette().color(QPalette::Base);
        option->displayAlignment = qtAlignment(grid_->CellAlignmentAt(index.row(), index.column()));
        if (option->features.testFlag(QStyleOptionViewItem::WrapText) && option->rect.isValid()) {
            const QStyle *style = option->widget->style();
            const int margin =
                style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, option->widget) + 1;
            const QRect area =
                style->subElementRect(QStyle::SE_ItemViewItemText, option, option->widget)
                    .adjusted(margin, 0, -margin, 0);
            option->text = linesThatFit(option->text, option->font, area);
        }
    }

  private:
    FlexGrid *grid_;
};

} // namespace

FlexGrid::FlexGrid(QWidget *parent) : QTableWidget(parent) {
    setItemDelegate(new CellDelegate(this));
    horizontalHeader()->hide();
    horizontalHeader()->setMinimumSectionSize(0);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(0);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setFocusPolicy(Qt::StrongFocus);
    setWordWrap(false);
    setMouseTracking(true);
    setTabKeyNavigation(false);
    // Texts are shown as they stand, cut at the cell's edge; the whole text is the tooltip.
    setTextElideMode(Qt::ElideNone);
    // Sideways by the pixel, so the list's columns slide under the fixed ones.
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setStyleSheet(QStringLiteral("QTableWidget { gridline-color: rgb(192, 192, 192); "
                                 "background-color: rgb(224, 224, 224); }"));
    QPalette colours = palette();
    colours.setColor(QPalette::Base, FixedAreaColor);
    // The marked row keeps the highlight colours when the grid loses the focus.
    for (QPalette::ColorRole role : {QPalette::Highlight, QPalette::HighlightedText}) {
        colours.setColor(QPalette::Inactive, role, colours.color(QPalette::Active, role));
    }
    setPalette(colours);
    fitRowsToFont();
}

// A row holds a line with room above it for the marks of a bold Å, Ä or Ö, which reach above
// the font's ascent in small sizes, and as much below: a heading's text is centred.
void FlexGrid::fitRowsToFont() {
    QFont bold = font();
    bold.setBold(true);
    const QFontMetrics metrics(bold);
    const int above =
        std::max(1, -metrics.tightBoundingRect(QStringLiteral("ÅÄÖ")).top() - metrics.ascent());
    verticalHeader()->setDefaultSectionSize(metrics.height() + 1 + 2 * above);
}

void FlexGrid::changeEvent(QEvent *event) {
    QTableWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        fitRowsToFont();
    }
}

void FlexGrid::createCells(int fromRow, int fromCol) {
    for (int row = 0; row < rowCount(); ++row) {
        for (int col = row < fromRow ? fromCol : 0; col < columnCount(); ++col) {
            setItem(row, col, new QTableWidgetItem());
        }
    }
}

void FlexGrid::setRows(int rows) {
    const int before = rowCount();
    setRowCount(rows);
    createCells(before, columnCount());
    row_ = std::clamp(row_, 0, std::max(0, rows - 1));
}

void FlexGrid::setCols(int cols) {
    const int before = columnCount();
    setColumnCount(cols);
    createCells(rowCount(), before);
    col_ = std::clamp(col_, 0, std::max(0, cols - 1));
    colSel_ = std::clamp(colSel_, 0, std::max(0, cols - 1));
}

void FlexGrid::setFixedRows(int rows) {
    fixedRows_ = rows;
    viewport()->update();
}

void FlexGrid::setFixedCols(int cols) {
    fixedCols_ = cols;
    viewport()->update();
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
    ++programMoves_;
    requireCell(row, col_ < columnCount() ? col_ : 0);
    row_ = row;
    colSel_ = col_;
    showSelection();
}

void FlexGrid::setCol(int col) {
    ++programMoves_;
    requireCell(row_ < rowCount() ? row_ : 0, col);
    col_ = col;
    colSel_ = col;
    showSelection();
}

void FlexGrid::setColSel(int col) {
    ++programMoves_;
    requireCell(row_ < rowCount() ? row_ : 0, col);
    colSel_ = col;
    showSelection();
}

void FlexGrid::setHighLight(int highLight) {
    highLight_ = highLight;
    showSelection();
}

void FlexGrid::showSelection(bool movedByUser) {
    const QSignalBlocker quiet(this);
    clearSelection();
    // The current cell alone is no marking: a fill or a move by the program leaves it where
    // its last write stood, and that is not to look like a chosen row.
    const bool marked =
        highLight_ != 0 && col_ != colSel_ && row_ >= fixedRows_ && row_ < rowCount();
    if (marked) {
        setRangeSelected(QTableWidgetSelectionRange(row_, std::min(col_, colSel_), row_,
                                                    std::max(col_, colSel_)),
                         true);
    }
    // The list scrolls to the user's row and to a row the program marks, never after the cell
    // that a fill wrote last: a refill leaves the list where it was, the newest products on top
    // in sight. Sideways the grid stays where the user left it, so the product's name doesn't
    // slide away when the dosage column is made current.
    if ((movedByUser || marked) && row_ < rowCount() && col_ < columnCount()) {
        settleLayout();
        const int across = horizontalScrollBar()->value();
        scrollTo(model()->index(row_, col_));
        horizontalScrollBar()->setValue(across);
    }
}

// The view lays out its rows and shows or hides its scroll bars in a later turn of events; a
// scroll made before that would leave the row under a scroll bar that comes, and the thumb
// where it was. One bar shown can make the other needed, so this is done until it holds.
void FlexGrid::settleLayout() {
    for (int turn = 0; turn < 3; ++turn) {
        executeDelayedItemsLayout();
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
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
    QTableWidgetItem *written = cell(row, col);
    written->setText(text);
    written->setToolTip(text);
}

int FlexGrid::CellPictureAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found ? found->data(PictureRole).toInt() : 0;
}

void FlexGrid::setCellPictureAt(int row, int col, int picture) {
    if (picture != 0) {
        // A number the list doesn't hold fails as the list itself does.
        images_.ListImage(picture);
    }
    cell(row, col)->setData(PictureRole, picture);
}

QColor FlexGrid::CellForeColorAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found && found->foreground().style() != Qt::NoBrush ? found->foreground().color()
                                                               : palette().color(QPalette::Text);
}

void FlexGrid::setCellForeColorAt(int row, int col, const QColor &color) {
    cell(row, col)->setForeground(color);
}

int FlexGrid::CellAlignmentAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    if (found && found->data(CellAlignmentRole).isValid()) {
        return found->data(CellAlignmentRole).toInt();
    }
    return ColAlignment(col);
}

void FlexGrid::setCellAlignmentAt(int row, int col, int alignment) {
    cell(row, col)->setData(CellAlignmentRole, alignment);
}

bool FlexGrid::CellFontBoldAt(int row, int col) const {
    const QTableWidgetItem *found = cellOrNull(row, col);
    return found && found->font().bold();
}

int FlexGrid::ColWidth(int col) const {
    requireCell(0, col);
    if (isColumnHidden(col)) {
        return 0;
    }
    return colWidths_.value(col, columnWidth(col) * TwipsPerPixel);
}

void FlexGrid::setColWidth(int col, int twips) {
    requireCell(0, col);
    colWidths_[col] = twips;
    setColumnHidden(col, twips == 0);
    if (twips > 0) {
        setColumnWidth(col, pixels(twips));
    }
}

int FlexGrid::ColAlignment(int col) const {
    return colAlignments_.value(col, AlignLeftCenter);
}

void FlexGrid::setColAlignment(int col, int alignment) {
    requireCell(0, col);
    colAlignments_[col] = alignment;
    viewport()->update();
}

int FlexGrid::RowHeight(int row) const {
    requireCell(row, 0);
    return rowHeight(row) * TwipsPerPixel;
}

void FlexGrid::setRowHeightTwips(int row, int twips) {
    requireCell(row, 0);
    setRowHeight(row, pixels(twips));
}

void FlexGrid::Clear() {
    writeCellsTogether([this] {
        for (int row = 0; row < rowCount(); ++row) {
            for (int col = 0; col < columnCount(); ++col) {
                setItem(row, col, new QTableWidgetItem());
            }
        }
    });
}

void FlexGrid::writeCellsTogether(const std::function<void()> &writes) {
    const auto announce = [this] {
        if (rowCount() > 0 && columnCount() > 0) {
            emit model()->dataChanged(model()->index(0, 0),
                                      model()->index(rowCount() - 1, columnCount() - 1));
        }
    };
    try {
        const QSignalBlocker quiet(model());
        writes();
    } catch (...) {
        announce();
        throw;
    }
    announce();
}

void FlexGrid::AddItem(const QString &tabSeparated) {
    const int row = rowCount();
    setRows(row + 1);
    const QStringList texts = tabSeparated.split(QLatin1Char('\t'));
    for (int col = 0; col < std::min<int>(texts.size(), columnCount()); ++col) {
        setTextMatrix(row, col, texts[col]);
    }
}

void FlexGrid::noteMousePosition(const QPoint &at) {
    const QModelIndex under = indexAt(at);
    if (under.isValid()) {
        mouseRow_ = under.row();
        mouseCol_ = under.column();
    }
}

// The fixed rows and columns stand still while the list scrolls under them: the view draws
// the scrolled cells, and the fixed ones are drawn over them where they were designed to be.
int FlexGrid::fixedHeight() const {
    return fixedRows_ >= rowCount() ? verticalHeader()->length()
                                    : verticalHeader()->sectionPosition(fixedRows_);
}

int FlexGrid::fixedWidth() const {
    return fixedCols_ >= columnCount() ? horizontalHeader()->length()
                                       : horizontalHeader()->sectionPosition(fixedCols_);
}

QRect FlexGrid::visualRect(const QModelIndex &index) const {
    QRect rect = QTableWidget::visualRect(index);
    if (index.isValid() && index.row() < fixedRows_) {
        rect.moveTop(verticalHeader()->sectionPosition(index.row()));
    }
    if (index.isValid() && index.column() < fixedCols_) {
        rect.moveLeft(horizontalHeader()->sectionPosition(index.column()));
    }
    return rect;
}

QModelIndex FlexGrid::indexAt(const QPoint &at) const {
    int row = rowAt(at.y());
    int col = columnAt(at.x());
    if (at.y() >= 0 && at.y() < fixedHeight()) {
        row = verticalHeader()->logicalIndexAt(at.y() - verticalHeader()->offset());
    }
    if (at.x() >= 0 && at.x() < fixedWidth()) {
        col = horizontalHeader()->logicalIndexAt(at.x() - horizontalHeader()->offset());
    }
    return row >= 0 && col >= 0 ? model()->index(row, col) : QModelIndex();
}

// A row of the list is brought out from under the fixed rows, and whole above the bottom edge.
void FlexGrid::scrollTo(const QModelIndex &index, ScrollHint hint) {
    QTableWidget::scrollTo(index, hint);
    QScrollBar *down = verticalScrollBar();
    if (index.row() < fixedRows_) {
        return;
    }
    while (rowViewportPosition(index.row()) < fixedHeight() && down->value() > down->minimum()) {
        down->setValue(down->value() - 1);
    }
    while (rowViewportPosition(index.row()) + rowHeight(index.row()) > viewport()->height() &&
           rowViewportPosition(index.row()) > fixedHeight() && down->value() < down->maximum()) {
        down->setValue(down->value() + 1);
    }
}

// The list scrolls a row at a time under the fixed rows, and at every position the first row
// shown stands whole just below them, however high it and the rows above it are: the scroll
// position is the number of the list's rows scrolled away.
void FlexGrid::alignListUnderFixedRows() {
    const int first = fixedRows_ + verticalScrollBar()->value();
    if (first < rowCount()) {
        verticalHeader()->setOffset(verticalHeader()->sectionPosition(first) - fixedHeight());
    }
}

void FlexGrid::updateGeometries() {
    QTableWidget::updateGeometries();
    // The last position is the first at which the list's last row shows whole.
    const int room = viewport()->height() - fixedHeight();
    const int end = verticalHeader()->length();
    int last = 0;
    while (fixedRows_ + last < rowCount() - 1 &&
           end - verticalHeader()->sectionPosition(fixedRows_ + last) > room) {
        ++last;
    }
    verticalScrollBar()->setRange(0, last);
    alignListUnderFixedRows();
}

void FlexGrid::scrollContentsBy(int dx, int dy) {
    QTableWidget::scrollContentsBy(dx, dy);
    alignListUnderFixedRows();
    // Scrolling moves the drawn picture, fixed cells and all: draw everything afresh.
    viewport()->update();
}

void FlexGrid::paintEvent(QPaintEvent *event) {
    QTableWidget::paintEvent(event);
    QPainter painter(viewport());
    const QRect all = viewport()->rect();
    const QRect rowBand(fixedWidth(), 0, all.width(), fixedHeight());
    const QRect colBand(0, fixedHeight(), fixedWidth(), all.height());
    paintFixedCells(painter, rowBand, [this](int row, int) { return row < fixedRows_; });
    paintFixedCells(painter, colBand, [this](int, int col) { return col < fixedCols_; });
    paintFixedCells(painter, all.intersected(QRect(0, 0, fixedWidth(), fixedHeight())),
                    [this](int row, int col) { return row < fixedRows_ && col < fixedCols_; });
}

void FlexGrid::paintFixedCells(QPainter &painter, const QRect &band,
                               const std::function<bool(int, int)> &inBand) {
    painter.setClipRect(band);
    for (int row = 0; row < rowCount(); ++row) {
        for (int col = 0; col < columnCount(); ++col) {
            if (!inBand(row, col) || isColumnHidden(col) || isRowHidden(row)) {
                continue;
            }
            const QModelIndex index = model()->index(row, col);
            const QRect rect = visualRect(index);
            if (!rect.intersects(band)) {
                continue;
            }
            QStyleOptionViewItem option;
            initViewItemOption(&option);
            option.rect = rect;
            itemDelegate()->paint(&painter, option, index);
            painter.setPen(GridLineColor);
            painter.drawLine(rect.right() + 1, rect.top(), rect.right() + 1, rect.bottom() + 1);
            painter.drawLine(rect.left(), rect.bottom() + 1, rect.right() + 1, rect.bottom() + 1);
        }
    }
}

void FlexGrid::mouseMoveEvent(QMouseEvent *event) {
    noteMousePosition(event->position().toPoint());
}

// Qt delivers a double click as two presses and a double-click event; the user's double click
// is one MouseDown, as a second tick on a tick box would undo the first. The rule is Qt's own:
// the same button again, soon and near, and a third press starts afresh.
bool FlexGrid::isSecondPressOfDoubleClick(const QMouseEvent *event) {
    const QStyleHints *hints = QGuiApplication::styleHints();
    const QPointF moved = event->position() - lastPressPosition_;
    const bool second = event->button() == lastPressButton_ &&
                        event->timestamp() - lastPressTime_ <
                            static_cast<quint64>(hints->mouseDoubleClickInterval()) &&
                        std::abs(moved.x()) <= hints->mouseDoubleClickDistance() &&
                        std::abs(moved.y()) <= hints->mouseDoubleClickDistance();
    lastPressButton_ = second ? Qt::NoButton : event->button();
    lastPressTime_ = event->timestamp();
    lastPressPosition_ = event->position();
    return second;
}

void FlexGrid::mousePressEvent(QMouseEvent *event) {
    const QPoint at = event->position().toPoint();
    const QModelIndex under = indexAt(at);
    if (isSecondPressOfDoubleClick(event) || !under.isValid()) {
        return;
    }
    const int row = under.row();
    const int col = under.column();
    noteMousePosition(at);
    setFocus(Qt::MouseFocusReason);
    if (row >= fixedRows_ && col < fixedCols_) {
        // A click in a fixed column marks the clicked row, as the user's own move.
        moveByUser(row, fixedCols_, columnCount() - 1);
    }
    const int button = event->button() == Qt::LeftButton    ? 1
                       : event->button() == Qt::RightButton ? 2
                                                            : 4;
    const Qt::KeyboardModifiers keys = event->modifiers();
    const int shift = (keys.testFlag(Qt::ShiftModifier) ? 1 : 0) +
                      (keys.testFlag(Qt::ControlModifier) ? 2 : 0) +
                      (keys.testFlag(Qt::AltModifier) ? 4 : 0);
    const quint64 movesBefore = programMoves_;
    emit MouseDown(button, shift, at.x() * TwipsPerPixel, at.y() * TwipsPerPixel);
    // In the cells of the list the click's own move comes after MouseDown, and only if the
    // handler left the current cell alone: a handler that moved it (a tick that rewrote the
    // list and selected the product where it now stands, or failed half-way) has the last
    // word, and no selection event runs behind its back.
    if (row >= fixedRows_ && col >= fixedCols_ && programMoves_ == movesBefore) {
        moveByUser(row, col, col);
    }
}

void FlexGrid::mouseDoubleClickEvent(QMouseEvent *event) {
    event->accept();
}

void FlexGrid::moveByUser(int row, int col, int colSel) {
    const bool moved = row != row_ || col != col_ || colSel != colSel_;
    row_ = row;
    col_ = col;
    colSel_ = colSel;
    showSelection(true);
    if (moved) {
        emit SelChange();
    }
}

// The rows of the list that show whole below the fixed rows.
int FlexGrid::rowsPerPage() const {
    const int height = rowCount() > fixedRows_ ? rowHeight(fixedRows_) : 1;
    return std::max(1, (viewport()->height() - fixedHeight()) / std::max(1, height));
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
    case Qt::Key_PageUp:
        row = std::max(fixedRows_, row - rowsPerPage());
        break;
    case Qt::Key_PageDown:
        row = std::min(rowCount() - 1, row + rowsPerPage());
        break;
    case Qt::Key_Home:
        row = fixedRows_;
        break;
    case Qt::Key_End:
        row = rowCount() - 1;
        break;
    default:
        QTableWidget::keyPressEvent(event);
        return;
    }
    if (row >= fixedRows_ && col >= fixedCols_) {
        moveByUser(row, col, col);
    }
}

} // namespace mirelo::platform

#include "screens/medication_list_pages.h"

#include "screens/screen_layout.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextCursor>
#include <QTextDocument>
#include <functional>
#include <memory>
#include <vector>

namespace mirelo::screens {
namespace {

// Sizes a patient reads on paper without glasses; the head of the page is smaller, the headings
// larger.
constexpr double HeadPoints = 9;
constexpr double BodyPoints = 11;
constexpr double SectionPoints = 14;
constexpr double TitlePoints = 20;

QString text(const std::string &utf8) {
    return QString::fromStdString(utf8);
}

// A piece of the list that a page never breaks: the title with the patient, a heading, an entry.
struct Block {
    std::unique_ptr<QTextDocument> text;
    qreal height = 0;
    qreal spaceAbove = 0; // not at the top of a page
    bool keepWithNext = false;
    int parts = 1; // the pages an entry higher than a page runs over
};

// A part of a block on a page, at its top within the page's body.
struct Placement {
    size_t block;
    int part;
    qreal top;
};

class Pages {
  public:
    Pages(const PrintedMedicationList &list, QPagedPaintDevice &device)
        : device_(device), area_(device.pageLayout().paintRectPixels(device.logicalDpiX())),
          width_(area_.width()), headFont_(verdana(HeadPoints)),
          headLine_(QFontMetricsF(headFont_, &device).height()), bodyTop_(headLine_ * 2.2),
          bodyHeight_(area_.height() - bodyTop_),
          line_(QFontMetricsF(verdana(BodyPoints), &device).height()) {
        add(
            [&list](QTextCursor &cursor) {
                cursor.insertText(text(list.title), format(TitlePoints, true));
                for (const std::string &line : list.patientLines) {
                    cursor.insertBlock();
                    cursor.insertText(text(line), format(BodyPoints, false));
                }
            },
            0, false);
        for (const PrintedSection &section : list.sections) {
            add(
                [&section](QTextCursor &cursor) {
                    cursor.insertText(text(section.heading), format(SectionPoints, true));
                },
                line_ * 1.5, true);
            if (section.entries.empty()) {
                addEntry({section.whenEmpty, {}}, false);
            }
            for (const PrintedEntry &entry : section.entries) {
                addEntry(entry, true);
            }
        }
        paginate();
    }

    void paint(const std::string &header) {
        QPainter painter;
        if (!painter.begin(&device_)) {
            return;
        }
        for (size_t page = 0; page < pages_.size(); ++page) {
            if (page > 0) {
                device_.newPage();
            }
            paintHead(painter, text(header), page + 1);
            for (const Placement &placed : pages_[page]) {
                const qreal partTop = placed.part * bodyHeight_;
                painter.save();
                painter.translate(0, bodyTop_ + placed.top - partTop);
                // A part holds its own page's lines only. The layout draws every paragraph that
                // touches the rectangle, so the neighbours' paragraphs that end or begin on its
                // edges are kept out by a hair: they would be hidden, yet be in the PDF's text.
                const QRectF part(0, partTop, width_, bodyHeight_);
                painter.setClipRect(part);
                blocks_[placed.block].text->drawContents(&painter, part.adjusted(0, 0.5, 0, -0.5));
                painter.restore();
            }
        }
    }

  private:
    static QTextCharFormat format(double points, bool bold) {
        QTextCharFormat format;
        format.setFont(verdana(points, bold));
        return format;
    }

    void add(const std::function<void(QTextCursor &)> &write, qreal spaceAbove, bool keepWithNext) {
        Block &block = blocks_.emplace_back();
        block.text = std::make_unique<QTextDocument>();
        block.text->documentLayout()->setPaintDevice(&device_);
        block.text->setDocumentMargin(0);
        block.text->setTextWidth(width_);
        QTextCursor cursor(block.text.get());
        write(cursor);
        block.height = block.text->size().height();
        block.spaceAbove = spaceAbove;
        block.keepWithNext = keepWithNext;
        if (block.height > bodyHeight_) {
            // Laid out page by page, a line is never cut in two.
            block.text->setPageSize(QSizeF(width_, bodyHeight_));
            block.parts = block.text->pageCount();
        }
    }

    void addEntry(const PrintedEntry &entry, bool titled) {
        add(
            [&entry, titled](QTextCursor &cursor) {
                cursor.insertText(text(entry.title), format(BodyPoints, titled));
                for (const std::string &line : entry.lines) {
                    cursor.insertBlock();
                    cursor.insertText(text(line), format(BodyPoints, false));
                }
            },
            line_ * 0.6, false);
    }

    // Each block goes on the page it fits whole, with the block it keeps with, else on the next.
    void paginate() {
        pages_.emplace_back();
        qreal top = 0;
        for (size_t i = 0; i < blocks_.size(); ++i) {
            const Block &block = blocks_[i];
            if (block.parts > 1) {
                for (int part = 0; part < block.parts; ++part) {
                    if (top > 0 || part > 0) {
                        pages_.emplace_back();
                    }
                    pages_.back().push_back({i, part, 0});
                    top = 0;
                }
                top = bodyHeight_;
                continue;
            }
            const qreal above = top > 0 ? block.spaceAbove : 0;
            qreal needed = above + block.height;
            if (block.keepWithNext && i + 1 < blocks_.size() && blocks_[i + 1].parts == 1) {
                needed += blocks_[i + 1].spaceAbove + blocks_[i + 1].height;
            }
            if (top > 0 && top + needed > bodyHeight_) {
                pages_.emplace_back();
                top = 0;
            } else {
                top += above;
            }
            pages_.back().push_back({i, 0, top});
            top += block.height;
        }
    }

    // The patient's name and number at the left, the page's number at the right, a rule below.
    void paintHead(QPainter &painter, const QString &header, size_t page) {
        const QString number =
            QStringLiteral("Sida %1 av %2").arg(page).arg(static_cast<qulonglong>(pages_.size()));
        painter.setFont(headFont_);
        const QFontMetricsF metrics(headFont_, &device_);
        const QRectF line(0, 0, width_, headLine_);
        const qreal room =
            width_ - metrics.horizontalAdvance(number) - metrics.averageCharWidth() * 4;
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(header, Qt::ElideRight, room));
        painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter, number);
        painter.drawLine(QPointF(0, headLine_ * 1.3), QPointF(width_, headLine_ * 1.3));
    }

    QPagedPaintDevice &device_;
    QRect area_;
    qreal width_;
    QFont headFont_;
    qreal headLine_;
    qreal bodyTop_;
    qreal bodyHeight_;
    qreal line_;
    std::vector<Block> blocks_;
    std::vector<std::vector<Placement>> pages_;
};

} // namespace

QPageLayout MedicationListPageLayout() {
    return QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(20, 15, 20, 15),
                       QPageLayout::Millimeter);
}

void PaintMedicationList(const PrintedMedicationList &list, QPagedPaintDevice &device) {
    Pages(list, device).paint(list.pageHeader);
}

std::string MedicationListPdf(const PrintedMedicationList &list) {
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&pdf);
        writer.setPageLayout(MedicationListPageLayout());
        writer.setTitle(text(list.title));
        writer.setCreator(QStringLiteral("Mirelo"));
        PaintMedicationList(list, writer);
    }
    return pdf.data().toStdString();
}

} // namespace mirelo::screens

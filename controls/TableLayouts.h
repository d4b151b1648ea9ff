#pragma once

#include <vector>

#include <QHash>
#include <QPointF>
#include <QTextFrame>
#include <QTextTable>

#include "controls/ParagraphLines.h"

namespace vandrel {

/// Where the parts of one table are. Lengths are in dots of the device; all but `position` count from the table's own
/// top left corner.
struct TableGeometry {
    /// The table's corner in the content of the frame that it stands in.
    QPointF position;
    /// The left edges of the columns, and the right edge of the last one.
    std::vector<qreal> columns;
    /// The tops of the rows.
    std::vector<qreal> rows;
    /// The bottoms of the rows. On paper the next row's top may be that of the next page.
    std::vector<qreal> bottoms;
    /// The height of what is in each cell, row by row; negative while it is not known.
    std::vector<qreal> contents;
    qreal padding = 0;
    /// The rows at its head that each of its pages begins with, as high as this.
    qreal headerHeight = 0;

    qreal width() const { return columns.empty() ? 0 : columns.back(); }
    qreal height() const { return bottoms.empty() ? 0 : bottoms.back(); }
    int columnAt(qreal x) const;
    int rowAt(qreal y) const;
    QRectF cellRect(const QTextTableCell &cell) const;
    /// The corner of a cell's content.
    QPointF contentOrigin(const QTextTableCell &cell) const;
};

/// Lays out tables, those inside their cells too, and remembers where their parts are.
///
/// Columns have the widths that the table states, whatever is in them, as rows of Rich Text Format do; columns of which
/// nothing is stated share the room that is left. A row that fits on a page is never split; head rows are repeated on
/// each page.
///
/// The layouts of the paragraphs in a cell are placed relative to the cell's content; origin() tells where that is.
class TableLayouts
{
public:
    explicit TableLayouts(const QTextDocument &document) : m_document(document) { }

    void setScale(const DeviceScale &scale) { m_scale = scale; }
    void setPages(const Pages &pages) { m_pages = pages; }

    /// Lays out a frame that stands in the document itself, and returns its size. `width` is the room between the
    /// margins, `top` where the frame begins on the pages. Cells whose paragraphs still have their lines, and whose
    /// width is the same, are only placed anew.
    QSizeF layOut(QTextFrame &frame, qreal width, qreal top);
    /// Forgets all tables.
    void clear() { m_tables.clear(); }

    /// The geometry of a table that is laid out; null for one that is not.
    const TableGeometry *geometry(const QTextTable &table) const;
    /// Where the content of the cell that holds a position begins, counted from the corner of the outermost frame.
    QPointF origin(int position) const;
    /// The innermost table around a position; null outside tables.
    QTextTable *tableAt(int position) const;
    /// The frame in the document itself that holds a position; null when there is none.
    QTextFrame *outermostFrame(int position) const;

private:
    struct Flow {
        qreal width = 0;
        qreal leftmost = 0;
        /// The place of the content's beginning on the pages.
        qreal top = 0;
    };

    QSizeF layOutTable(QTextTable &table, QPointF position, const Flow &around);
    QSizeF layOutFlow(QTextFrame::iterator begin, const QTextFrame::iterator &end, const Flow &flow);
    QSizeF layOutInside(QTextFrame &frame, qreal y, const Flow &flow);
    void setColumns(TableGeometry &geometry, const QTextTableFormat &format, int count, qreal width) const;
    void layOutRow(QTextTable &table, TableGeometry &geometry, int row, qreal top, bool sameColumns);
    bool isClean(const QTextTableCell &cell) const;
    qreal leftOf(const QTextTableFormat &format, qreal tableWidth, qreal room) const;

    const QTextDocument &m_document;
    DeviceScale m_scale;
    Pages m_pages;
    /// By the number that the document gives each table.
    QHash<int, TableGeometry> m_tables;
};

/// Whether an empty paragraph is there only because the document model needs one in front of a table.
bool isHiddenBeforeTable(const QTextBlock &block, const QTextFrame *next);

} // namespace vandrel

#include "controls/TableLayouts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

namespace vandrel {

namespace {

constexpr qreal narrowestColumn = 8;

std::size_t at(int index)
{
    return static_cast<std::size_t>(index);
}

// The frame among `frames`, which stand in the order of the text, that holds a position.
QTextFrame *frameHolding(const QList<QTextFrame *> &frames, int position)
{
    const auto behind = std::upper_bound(frames.begin(), frames.end(), position,
                                         [](int p, const QTextFrame *f) { return p < f->firstPosition(); });
    if (behind == frames.begin())
        return nullptr;
    QTextFrame *frame = *std::prev(behind);
    return position <= frame->lastPosition() ? frame : nullptr;
}

int indexIn(const std::vector<qreal> &edges, qreal place)
{
    const auto behind = std::upper_bound(edges.begin(), edges.end(), place);
    return std::max(0, static_cast<int>(behind - edges.begin()) - 1);
}

} // namespace

int TableGeometry::columnAt(qreal x) const
{
    return std::min(indexIn(columns, x), static_cast<int>(columns.size()) - 2);
}

int TableGeometry::rowAt(qreal y) const
{
    return std::min(indexIn(rows, y), static_cast<int>(rows.size()) - 1);
}

QRectF TableGeometry::cellRect(const QTextTableCell &cell) const
{
    const int lastRow = std::min(cell.row() + cell.rowSpan(), static_cast<int>(rows.size())) - 1;
    const int end = std::min(cell.column() + cell.columnSpan(), static_cast<int>(columns.size()) - 1);
    return {QPointF(columns[at(cell.column())], rows[at(cell.row())]),
            QPointF(columns[at(end)], bottoms[at(lastRow)])};
}

QPointF TableGeometry::contentOrigin(const QTextTableCell &cell) const
{
    const QRectF rect = cellRect(cell);
    const int columnCount = static_cast<int>(columns.size()) - 1;
    const qreal content = contents[at(cell.row() * columnCount + cell.column())];
    const qreal spare = std::max(0.0, rect.height() - 2 * padding - content);
    qreal down = 0;
    const auto alignment = cell.format().verticalAlignment();
    if (alignment == QTextCharFormat::AlignMiddle)
        down = spare / 2;
    else if (alignment == QTextCharFormat::AlignBottom)
        down = spare;
    return rect.topLeft() + QPointF(padding, padding + down);
}

QSizeF TableLayouts::layOut(QTextFrame &frame, qreal width, qreal top)
{
    const Flow flow{width, 0, top};
    if (auto *table = qobject_cast<QTextTable *>(&frame))
        return layOutTable(*table, QPointF(), flow);
    return layOutFlow(frame.begin(), frame.end(), flow);
}

const TableGeometry *TableLayouts::geometry(const QTextTable &table) const
{
    const auto found = m_tables.constFind(table.objectIndex());
    if (found == m_tables.constEnd() || static_cast<int>(found->bottoms.size()) != table.rows()
        || static_cast<int>(found->columns.size()) != table.columns() + 1)
        return nullptr;
    return &*found;
}

QTextFrame *TableLayouts::outermostFrame(int position) const
{
    return frameHolding(m_document.rootFrame()->childFrames(), position);
}

QTextTable *TableLayouts::tableAt(int position) const
{
    QTextTable *innermost = nullptr;
    for (QTextFrame *frame = outermostFrame(position); frame;
         frame = frameHolding(frame->childFrames(), position)) {
        if (auto *table = qobject_cast<QTextTable *>(frame))
            innermost = table;
    }
    return innermost;
}

QPointF TableLayouts::origin(int position) const
{
    QPointF origin;
    for (QTextTable *table = tableAt(position); table;) {
        const TableGeometry *its = geometry(*table);
        if (!its)
            break;
        origin += its->position + its->contentOrigin(table->cellAt(position));
        position = table->firstPosition();
        QTextFrame *around = table->parentFrame();
        while (around && !qobject_cast<QTextTable *>(around))
            around = around->parentFrame();
        table = qobject_cast<QTextTable *>(around);
    }
    return origin;
}

qreal TableLayouts::leftOf(const QTextTableFormat &format, qreal tableWidth, qreal room) const
{
    const qreal spare = std::max(0.0, room - tableWidth);
    if (format.alignment() & Qt::AlignHCenter)
        return spare / 2;
    if (format.alignment() & Qt::AlignRight)
        return spare;
    return format.leftMargin() * m_scale.lengths;
}

void TableLayouts::setColumns(TableGeometry &geometry,
                              const QTextTableFormat &format,
                              int count,
                              qreal width) const
{
    const QList<QTextLength> stated = format.columnWidthConstraints();
    std::vector<qreal> widths(at(count), -1);
    qreal known = 0;
    int unknown = 0;
    for (int column = 0; column < count; ++column) {
        const QTextLength length = stated.value(column);
        if (length.type() == QTextLength::FixedLength)
            widths[at(column)] = length.rawValue() * m_scale.lengths;
        else if (length.type() == QTextLength::PercentageLength)
            widths[at(column)] = length.value(width);
        if (widths[at(column)] >= 0)
            known += widths[at(column)];
        else
            ++unknown;
    }
    const qreal share = unknown > 0 ? std::max(0.0, width - known) / unknown : 0;
    geometry.columns.assign(1, 0);
    for (const qreal column : widths)
        geometry.columns.push_back(
            geometry.columns.back()
            + std::max(column >= 0 ? column : share, narrowestColumn * m_scale.lengths));
}

// Cells are walked through while the geometry of the tables inside them is added: the table's own is taken out of
// the collection meanwhile, and put back.
QSizeF TableLayouts::layOutTable(QTextTable &table, QPointF position, const Flow &around)
{
    const QTextTableFormat format = table.format();
    const int rows = table.rows();
    const int columns = table.columns();
    TableGeometry geometry = m_tables.take(table.objectIndex());
    const std::vector<qreal> oldColumns = geometry.columns;
    const bool sameShape = geometry.contents.size() == at(rows) * at(columns);
    geometry.padding = format.cellPadding() * m_scale.lengths;
    setColumns(geometry, format, columns, around.width);
    const bool sameColumns = sameShape && oldColumns == geometry.columns && !m_pages.exist();
    geometry.position = position + QPointF(leftOf(format, geometry.width(), around.width), 0);
    geometry.rows.assign(at(rows), 0);
    geometry.bottoms.assign(at(rows), 0);
    if (!sameShape)
        geometry.contents.assign(at(rows) * at(columns), -1);
    const qreal top = around.top + position.y();
    qreal y = 0;
    for (int row = 0; row < rows; ++row) {
        geometry.rows[at(row)] = y;
        layOutRow(table, geometry, row, top, sameColumns);
        const qreal height = geometry.bottoms[at(row)] - y;
        const bool repeatsHead = row >= format.headerRowCount();
        const qreal moved = m_pages.fit(top + y, height) - top;
        const qreal head = repeatsHead ? geometry.headerHeight : 0;
        if (moved > y && height + head <= m_pages.room()) {
            geometry.rows[at(row)] = moved + head;
            layOutRow(table, geometry, row, top, sameColumns);
        }
        y = geometry.bottoms[at(row)];
        if (row == format.headerRowCount() - 1 && y < m_pages.room() / 2)
            geometry.headerHeight = y - geometry.rows.front();
    }
    const QSizeF size(geometry.position.x() + geometry.width(), geometry.height());
    m_tables[table.objectIndex()] = std::move(geometry);
    return size;
}

// A cell that spans rows makes the last of them as high as it needs.
void TableLayouts::layOutRow(QTextTable &table, TableGeometry &geometry, int row, qreal top, bool sameColumns)
{
    const int columns = table.columns();
    const qreal rowTop = geometry.rows[at(row)];
    const qreal leastHeight = 2 * geometry.padding;
    qreal bottom = rowTop + leastHeight;
    for (int column = 0; column < columns; ++column) {
        const QTextTableCell cell = table.cellAt(row, column);
        if (!cell.isValid() || cell.column() != column)
            continue;
        qreal &content = geometry.contents[at(cell.row() * columns + column)];
        if (cell.row() == row && !(sameColumns && content >= 0 && isClean(cell))) {
            const int end = std::min(column + cell.columnSpan(), columns);
            Flow flow;
            flow.width = std::max(
                1.0, geometry.columns[at(end)] - geometry.columns[at(column)] - 2 * geometry.padding);
            flow.leftmost = -geometry.padding;
            flow.top = top + rowTop + geometry.padding;
            content = layOutFlow(cell.begin(), cell.end(), flow).height();
        }
        if (cell.row() + cell.rowSpan() - 1 == row)
            bottom = std::max(bottom, geometry.rows[at(cell.row())] + content + 2 * geometry.padding);
    }
    geometry.bottoms[at(row)] = bottom;
}

bool TableLayouts::isClean(const QTextTableCell &cell) const
{
    for (QTextFrame::iterator it = cell.begin(); it != cell.end(); ++it) {
        const QTextBlock block = it.currentBlock();
        if (!block.isValid() || block.layout()->lineCount() == 0)
            return false;
    }
    return true;
}

QSizeF TableLayouts::layOutFlow(QTextFrame::iterator begin, const QTextFrame::iterator &end, const Flow &flow)
{
    QSizeF size(0, 0);
    qreal y = 0;
    // What the paragraph above leaves below; a table leaves nothing.
    qreal below = 0;
    bool isBehindTable = false;
    for (QTextFrame::iterator it = begin; it != end; ++it) {
        if (QTextFrame *frame = it.currentFrame()) {
            y += below;
            below = 0;
            isBehindTable = true;
            const QSizeF its = layOutInside(*frame, y, flow);
            y += its.height();
            size.setWidth(std::max(size.width(), its.width()));
            continue;
        }
        const QTextBlock block = it.currentBlock();
        if (!block.isValid() || !block.isVisible())
            continue;
        QTextFrame::iterator following = it;
        ++following;
        y += std::max(block.blockFormat().topMargin() * m_scale.lengths, below);
        below = block.blockFormat().bottomMargin() * m_scale.lengths;
        block.layout()->setPosition(QPointF(0, y));
        const TextArea area{flow.width, flow.leftmost};
        const ParagraphSize paragraph = breakParagraph(block, area, m_scale, m_pages, flow.top + y);
        size.setWidth(std::max(size.width(), paragraph.widest));
        // The empty paragraph that a cell must end with takes no room behind a table.
        if (std::exchange(isBehindTable, false) && following == end && block.length() == 1)
            block.layout()->setPosition(QPointF(0, y - paragraph.height));
        else if (following == end || !isHiddenBeforeTable(block, following.currentFrame()))
            y += paragraph.height;
    }
    size.setHeight(y + below);
    return size;
}

QSizeF TableLayouts::layOutInside(QTextFrame &frame, qreal y, const Flow &flow)
{
    if (auto *table = qobject_cast<QTextTable *>(&frame))
        return layOutTable(*table, QPointF(0, y), flow);
    Flow inside = flow;
    inside.top += y;
    return layOutFlow(frame.begin(), frame.end(), inside);
}

bool isHiddenBeforeTable(const QTextBlock &block, const QTextFrame *next)
{
    return block.length() == 1 && qobject_cast<const QTextTable *>(next) != nullptr;
}

} // namespace vandrel

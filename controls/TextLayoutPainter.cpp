#include "controls/TextLayoutPainter.h"

#include <algorithm>

#include <QPainter>
#include <QScopedValueRollback>
#include <QTextLayout>
#include <QTextTable>

#include "controls/ListMarker.h"

namespace vandrel {

namespace {

using Context = TextLayoutPainter::Context;

QVector<QTextLayout::FormatRange> selectionsIn(const Context &context, const QTextBlock &block)
{
    QVector<QTextLayout::FormatRange> ranges;
    for (const QAbstractTextDocumentLayout::Selection &selection : context.selections) {
        // Cells that are selected side by side are drawn one by one.
        if (selection.cursor.hasComplexSelection())
            continue;
        const int start = selection.cursor.selectionStart() - block.position();
        const int end = selection.cursor.selectionEnd() - block.position();
        if (start >= block.length() || end <= 0 || end <= start)
            continue;
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = end - start;
        range.format = selection.format;
        ranges.append(range);
    }
    return ranges;
}

// A list's marker is selected together with the paragraph end before it.
const QTextCharFormat *markerSelection(const Context &context, const QTextBlock &block)
{
    for (const QAbstractTextDocumentLayout::Selection &selection : context.selections) {
        if (!selection.cursor.hasComplexSelection() && selection.cursor.selectionStart() < block.position()
            && selection.cursor.selectionEnd() > block.position())
            return &selection.format;
    }
    return nullptr;
}

void drawRule(QPainter &painter, const QPalette &palette, const QTextBlock &block, const QRectF &rect)
{
    const QTextBlockFormat format = block.blockFormat();
    if (!format.hasProperty(QTextFormat::BlockTrailingHorizontalRulerWidth))
        return;
    const qreal width
        = format.lengthProperty(QTextFormat::BlockTrailingHorizontalRulerWidth).value(rect.width());
    const qreal y = block.length() == 1 ? rect.center().y() : rect.bottom();
    const qreal middle = rect.center().x();
    painter.setPen(palette.color(QPalette::Dark));
    painter.drawLine(QLineF(middle - width / 2, y, middle + width / 2, y));
}

} // namespace

TextLayoutPainter::TextLayoutPainter(QPainter &painter,
                                     const Context &context,
                                     const TableLayouts &tables,
                                     int caretWidth)
    : m_painter(painter), m_context(context), m_tables(tables), m_caretWidth(caretWidth)
{ }

void TextLayoutPainter::drawParagraph(const QTextBlock &block, const QRectF &clip)
{
    const QTextLayout *layout = block.layout();
    const QRectF rect = layout->boundingRect().translated(layout->position());
    const QBrush background = block.blockFormat().background();
    if (background.style() != Qt::NoBrush) {
        m_painter.setBrushOrigin(rect.topLeft());
        m_painter.fillRect(rect, background);
    }
    drawListMarker(&m_painter, block, m_context.palette,
                   m_wholeCell ? m_wholeCell : markerSelection(m_context, block));

    const QPen oldPen = m_painter.pen();
    m_painter.setPen(m_context.palette.color(QPalette::Text));
    QVector<QTextLayout::FormatRange> selections = selectionsIn(m_context, block);
    if (m_wholeCell) {
        QTextLayout::FormatRange all;
        all.length = block.length();
        all.format = *m_wholeCell;
        selections.append(all);
    }
    layout->draw(&m_painter, QPointF(), selections, clip);
    drawCaret(block);
    drawRule(m_painter, m_context.palette, block, rect);
    m_painter.setPen(oldPen);
}

void TextLayoutPainter::drawCaret(const QTextBlock &block)
{
    const QTextLayout *layout = block.layout();
    int position = m_context.cursorPosition - block.position();
    // A caret inside text that an input method has not yet committed is told as a number below -1.
    if (m_context.cursorPosition < -1 && !layout->preeditAreaText().isEmpty())
        position = layout->preeditAreaPosition() - (m_context.cursorPosition + 2);
    else if (!block.contains(m_context.cursorPosition))
        return;
    layout->drawCursor(&m_painter, QPointF(), position, m_caretWidth);
}

void TextLayoutPainter::drawFrame(const QTextFrame &frame, const QPointF &origin, const QRectF &clip)
{
    if (const auto *table = qobject_cast<const QTextTable *>(&frame)) {
        drawTable(*table, origin, clip);
        return;
    }
    m_painter.translate(origin);
    drawFlow(frame.begin(), frame.end(), clip.translated(-origin));
    m_painter.translate(-origin);
}

void TextLayoutPainter::drawFlow(QTextFrame::iterator begin,
                                 const QTextFrame::iterator &end,
                                 const QRectF &clip)
{
    for (QTextFrame::iterator it = begin; it != end; ++it) {
        if (const QTextFrame *frame = it.currentFrame()) {
            drawFrame(*frame, QPointF(), clip);
            continue;
        }
        const QTextBlock block = it.currentBlock();
        if (block.isValid() && block.isVisible() && block.layout()->lineCount() > 0)
            drawParagraph(block, clip);
    }
}

void TextLayoutPainter::drawTable(const QTextTable &table, const QPointF &origin, const QRectF &clip)
{
    const TableGeometry *geometry = m_tables.geometry(table);
    if (!geometry)
        return;
    const QPointF corner = origin + geometry->position;
    const int first = geometry->rowAt(clip.top() - corner.y());
    for (int row = first; row < table.rows(); ++row) {
        if (corner.y() + geometry->rows[static_cast<std::size_t>(row)] > clip.bottom())
            break;
        if (row > first || first > 0)
            drawHead(table, row, corner, clip);
        for (int column = 0; column < table.columns(); ++column) {
            const QTextTableCell cell = table.cellAt(row, column);
            // A cell that begins above what is drawn is drawn with the first row that shows a part of it.
            if (cell.isValid() && cell.column() == column && (cell.row() == row || row == first))
                drawCell(table, cell, corner, clip);
        }
    }
}

// On a new page the head rows are drawn once more, into the room that was left for them.
void TextLayoutPainter::drawHead(const QTextTable &table, int row, const QPointF &origin, const QRectF &clip)
{
    const TableGeometry &geometry = *m_tables.geometry(table);
    const auto index = static_cast<std::size_t>(row);
    const int headRows = table.format().headerRowCount();
    if (!m_pages.exist() || row < headRows || row == 0 || geometry.headerHeight <= 0
        || geometry.rows[index] - geometry.headerHeight < geometry.bottoms[index - 1])
        return;
    const QPointF down(0, geometry.rows[index] - geometry.headerHeight - geometry.rows.front());
    for (int head = 0; head < headRows; ++head) {
        for (int column = 0; column < table.columns(); ++column) {
            const QTextTableCell cell = table.cellAt(head, column);
            if (cell.isValid() && cell.row() == head && cell.column() == column)
                drawCell(table, cell, origin + down, clip);
        }
    }
}

void TextLayoutPainter::drawCell(const QTextTable &table,
                                 const QTextTableCell &cell,
                                 const QPointF &origin,
                                 const QRectF &clip)
{
    const TableGeometry &geometry = *m_tables.geometry(table);
    const QRectF rect = geometry.cellRect(cell).translated(origin);
    const QScopedValueRollback<const QTextCharFormat *> whole(
        m_wholeCell, m_wholeCell ? m_wholeCell : cellSelection(table, cell));
    if (m_wholeCell)
        m_painter.fillRect(rect, m_wholeCell->background());
    else if (const QBrush background = cell.format().background(); background.style() != Qt::NoBrush)
        m_painter.fillRect(rect, background);
    drawBorder(table.format(), rect);
    const QPointF content = origin + geometry.contentOrigin(cell);
    m_painter.translate(content);
    drawFlow(cell.begin(), cell.end(), clip.translated(-content));
    m_painter.translate(-content);
}

void TextLayoutPainter::drawBorder(const QTextTableFormat &format, const QRectF &rect)
{
    if (format.border() <= 0 || format.borderStyle() == QTextFrameFormat::BorderStyle_None)
        return;
    m_painter.save();
    m_painter.setPen(QPen(format.borderBrush(), std::max(1.0, format.border() * m_scale.lengths)));
    m_painter.setBrush(Qt::NoBrush);
    m_painter.drawRect(rect);
    m_painter.restore();
}

const QTextCharFormat *TextLayoutPainter::cellSelection(const QTextTable &table,
                                                        const QTextTableCell &cell) const
{
    for (const QAbstractTextDocumentLayout::Selection &selection : m_context.selections) {
        if (!selection.cursor.hasComplexSelection() || selection.cursor.currentTable() != &table)
            continue;
        int row = -1;
        int rows = 0;
        int column = -1;
        int columns = 0;
        selection.cursor.selectedTableCells(&row, &rows, &column, &columns);
        if (cell.row() + cell.rowSpan() > row && cell.row() < row + rows
            && cell.column() + cell.columnSpan() > column && cell.column() < column + columns)
            return &selection.format;
    }
    return nullptr;
}

} // namespace vandrel

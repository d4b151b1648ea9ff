#pragma once

#include <QAbstractTextDocumentLayout>
#include <QRectF>
#include <QTextBlock>

#include "controls/TableLayouts.h"

class QPainter;

namespace vandrel {

/// Draws what is laid out: paragraphs with their selections, list markers and the caret, and tables with their cells.
class TextLayoutPainter
{
public:
    using Context = QAbstractTextDocumentLayout::PaintContext;

    TextLayoutPainter(QPainter &painter, const Context &context, const TableLayouts &tables, int caretWidth);

    void setPages(const Pages &pages) { m_pages = pages; }
    void setScale(const DeviceScale &scale) { m_scale = scale; }

    /// Draws a paragraph where its layout is placed; `clip` is what has to be drawn.
    void drawParagraph(const QTextBlock &block, const QRectF &clip);
    /// Draws a frame whose corner is at `origin`.
    void drawFrame(const QTextFrame &frame, const QPointF &origin, const QRectF &clip);

private:
    void drawTable(const QTextTable &table, const QPointF &origin, const QRectF &clip);
    void
    drawCell(const QTextTable &table, const QTextTableCell &cell, const QPointF &origin, const QRectF &clip);
    void drawFlow(QTextFrame::iterator begin, const QTextFrame::iterator &end, const QRectF &clip);
    void drawHead(const QTextTable &table, int row, const QPointF &origin, const QRectF &clip);
    void drawBorder(const QTextTableFormat &format, const QRectF &rect);
    void drawCaret(const QTextBlock &block);
    const QTextCharFormat *cellSelection(const QTextTable &table, const QTextTableCell &cell) const;

    QPainter &m_painter;
    const Context &m_context;
    const TableLayouts &m_tables;
    Pages m_pages;
    DeviceScale m_scale;
    int m_caretWidth;
    /// The look of everything in a cell that is selected whole.
    const QTextCharFormat *m_wholeCell = nullptr;
};

} // namespace vandrel

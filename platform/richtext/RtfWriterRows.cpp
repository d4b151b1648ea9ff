#include "platform/richtext/RtfWriterRows.h"

#include <algorithm>
#include <cmath>

#include <QBrush>
#include <QTextTableFormat>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfFormatting.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfUnits.h"
#include "platform/richtext/RtfWriterOutput.h"

namespace vandrel {

namespace {

// The width of the text on a page with usual margins, in twips, and the least that a cell gets of it.
constexpr int textWidth = 9360;
constexpr int narrowestCell = 30;
constexpr int usualGap = 108;

int countCells(QByteArrayView definition)
{
    int cells = 0;
    RtfTokenizer tokens(definition);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next())
        cells += token.type == RtfToken::Type::Word && token.text == QByteArrayView("cellx");
    return cells;
}

QByteArray loadedDefinition(const QTextTable &table, int row)
{
    const QVariantList definitions = table.format().property(richtext::RowDefinitions).toList();
    return definitions.size() == table.rows() ? definitions[row].toByteArray() : QByteArray();
}

int columnWidth(const QTextLength &length, int columns)
{
    switch (length.type()) {
    case QTextLength::FixedLength:
        return static_cast<int>(std::lround(length.rawValue() * twipsPerPixel));
    case QTextLength::PercentageLength:
        return static_cast<int>(std::lround(length.rawValue() * textWidth / 100));
    case QTextLength::VariableLength:
        break;
    }
    return textWidth / columns;
}

// The right edges of a table's columns.
QList<int> columnEdges(const QTextTable &table)
{
    const QList<QTextLength> widths = table.format().columnWidthConstraints();
    QList<int> edges;
    int edge = 0;
    for (int column = 0; column < table.columns(); ++column) {
        edge += std::max(columnWidth(widths.value(column), table.columns()), narrowestCell);
        edges.append(std::min(edge, rtfLongestTwips));
    }
    return edges;
}

void appendBorders(QByteArray &rtf, double pixels)
{
    if (pixels <= 0)
        return;
    const int width
        = std::clamp(static_cast<int>(std::lround(pixels * pointsPerPixel * twipsPerPoint)), 1, 75);
    for (const char *side : {"clbrdrt", "clbrdrl", "clbrdrb", "clbrdrr"}) {
        (rtf += '\\') += side;
        rtf += "\\brdrs";
        appendRtfWord(rtf, "brdrw", width);
    }
}

void appendMerge(QByteArray &rtf, const QTextTableCell &cell, int row)
{
    if (cell.rowSpan() > 1)
        rtf += cell.row() == row ? "\\clvmgf" : "\\clvmrg";
}

void appendVerticalAlignment(QByteArray &rtf, const QTextCharFormat &format)
{
    if (format.verticalAlignment() == QTextCharFormat::AlignMiddle)
        rtf += "\\clvertalc";
    else if (format.verticalAlignment() == QTextCharFormat::AlignBottom)
        rtf += "\\clvertalb";
}

QByteArray madeDefinition(const QTextTable &table, int row, RtfWriterTables &tables)
{
    const QTextTableFormat format = table.format();
    const QList<int> edges = columnEdges(table);
    QByteArray rtf("\\trowd");
    appendRtfWord(rtf, "trgaph", usualGap);
    if (row < format.headerRowCount())
        rtf += "\\trhdr";
    const QList<QTextTableCell> cells = rtfRowCells(table, row);
    for (const QTextTableCell &cell : cells) {
        appendMerge(rtf, cell, row);
        appendBorders(rtf, format.border());
        appendVerticalAlignment(rtf, cell.format());
        const QBrush behind = cell.format().background();
        if (behind.style() == Qt::SolidPattern)
            appendRtfWord(rtf, "clcbpat", tables.colour(behind.color()));
        appendRtfWord(rtf, "cellx", edges[cell.column() + cell.columnSpan() - 1]);
    }
    return rtf;
}

} // namespace

QList<QTextTableCell> rtfRowCells(const QTextTable &table, int row)
{
    QList<QTextTableCell> cells;
    for (int column = 0; column < table.columns(); ++column) {
        const QTextTableCell cell = table.cellAt(row, column);
        if (cell.column() == column)
            cells.append(cell);
    }
    return cells;
}

QByteArray rtfRowDefinition(const QTextTable &table, int row, RtfWriterTables &tables)
{
    const QByteArray loaded = loadedDefinition(table, row);
    if (!loaded.isEmpty() && countCells(loaded) == rtfRowCells(table, row).size())
        return loaded;
    return madeDefinition(table, row, tables);
}

} // namespace vandrel

#include "platform/richtext/RtfRows.h"

#include <algorithm>

#include "platform/richtext/RtfFormatting.h"

namespace vandrel {

namespace {

constexpr qsizetype longestRaw = 4096;
constexpr qsizetype mostCells = 1000;
/// A cell is at least so wide, in twips, whatever the file says.
constexpr int narrowestCell = 30;

/// True for the words that choose a kind of line, false for its width, colour and distance, and for no line.
bool drawsLine(QByteArrayView borderWord)
{
    static constexpr QByteArrayView others[] = {"brdrw", "brdrcf", "brdrnone", "brdrnil", "brdrtbl", "brsp"};
    return std::find(std::begin(others), std::end(others), borderWord) == std::end(others);
}

} // namespace

QByteArray RtfRowDefinition::toRtf() const
{
    QByteArray rtf = raw.isEmpty() ? QByteArrayLiteral("\\trowd") : raw;
    for (const RtfCellDefinition &cell : cells)
        rtf.append(cell.raw).append("\\cellx").append(QByteArray::number(cell.right));
    return rtf;
}

bool RtfRowReader::take(RtfWordInfo info, const RtfToken &token)
{
    if (info.word == RtfWord::Trowd) {
        m_now = Definition();
        m_now.isOpen = true;
        keep(m_now.row.raw, token);
        return true;
    }
    if (info.kind != RtfWordKind::Row)
        return m_now.isOpen && info.kind == RtfWordKind::Unknown && takeUnknown(token);
    m_now.stored = -1;
    return takeCellWord(info.word, token) || takeRowWord(info.word, token);
}

bool RtfRowReader::takeCellWord(RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Cellx:
        endCell(token.number);
        return true;
    case RtfWord::Clmgf:
        m_now.cell.startsHorizontalMerge = true;
        return true;
    case RtfWord::Clmrg:
        m_now.cell.mergedLeft = true;
        return true;
    case RtfWord::Clvmgf:
        m_now.cell.startsVerticalMerge = true;
        break;
    case RtfWord::Clvmrg:
        m_now.cell.mergedUp = true;
        break;
    case RtfWord::Clvertalt:
        m_now.cell.verticalAlignment = RtfCellDefinition::Top;
        break;
    case RtfWord::Clvertalc:
        m_now.cell.verticalAlignment = RtfCellDefinition::Middle;
        break;
    case RtfWord::Clvertalb:
        m_now.cell.verticalAlignment = RtfCellDefinition::Bottom;
        break;
    case RtfWord::Clcbpat:
        m_now.cell.background = token.number;
        break;
    default:
        return false;
    }
    keep(m_now.cell.raw, token);
    return true;
}

bool RtfRowReader::takeRowWord(RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Trgaph:
        m_now.row.gap = std::clamp(token.number, 0, rtfLongestTwips);
        break;
    case RtfWord::Trleft:
        m_now.row.left = clampTwips(token.number);
        break;
    case RtfWord::Trhdr:
        m_now.row.isHeader = true;
        break;
    case RtfWord::Trql:
        m_now.row.alignment = RtfRowDefinition::Left;
        break;
    case RtfWord::Trqc:
        m_now.row.alignment = RtfRowDefinition::Centre;
        break;
    case RtfWord::Trqr:
        m_now.row.alignment = RtfRowDefinition::Right;
        break;
    default:
        return false;
    }
    keep(m_now.row.raw, token);
    return true;
}

/// Edges grow from left to right; one that does not is moved.
void RtfRowReader::endCell(int right)
{
    m_now.borders = Borders::None;
    const int left = m_now.row.cells.isEmpty() ? m_now.row.left : m_now.row.cells.last().right;
    m_now.cell.right = std::max(clampTwips(right), left + narrowestCell);
    if (m_now.row.cells.size() < mostCells)
        m_now.row.cells.append(m_now.cell);
    m_now.cell = RtfCellDefinition();
}

/// Words of rows and cells that are only kept: widths, paddings, borders.
bool RtfRowReader::takeUnknown(const RtfToken &token)
{
    const bool isCell = token.text.startsWith("cl");
    const bool isRow
        = token.text.startsWith("tr") || token.text.startsWith("tbl") || token.text.startsWith("ts");
    const bool isBorder = isBorderDetail(token) && m_now.borders != Borders::None;
    if (!isCell && !isRow && !isBorder)
        return false;
    if (isCell)
        m_now.borders = Borders::Cell;
    else if (isRow)
        m_now.borders = Borders::Row;
    if (isBorder && drawsLine(token.text))
        m_now.row.hasBorders = true;
    m_now.stored = -1;
    keep(m_now.borders == Borders::Cell ? m_now.cell.raw : m_now.row.raw, token);
    return true;
}

void RtfRowReader::keep(QByteArray &raw, const RtfToken &token)
{
    if (raw.size() < longestRaw)
        appendRtfWord(raw, token);
}

qsizetype RtfRowReader::current()
{
    if (m_now.stored < 0) {
        m_definitions.append(m_now.row);
        m_now.stored = m_definitions.size() - 1;
    }
    return m_now.stored;
}

} // namespace vandrel

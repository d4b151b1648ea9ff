#include "controls/RichTextPositions.h"

#include <algorithm>

#include <QTextBlock>

namespace vandrel {

namespace {

int lastPosition(const QTextDocument &document)
{
    return document.characterCount() - 1;
}

} // namespace

void showAsText(QString &paragraph)
{
    const auto special
        = [](QChar c) { return c == QChar::ObjectReplacementCharacter || c == QChar::LineSeparator; };
    // Most paragraphs hold nothing special, and writing to one would copy it.
    if (std::none_of(paragraph.cbegin(), paragraph.cend(), special))
        return;
    for (QChar &c : paragraph) {
        if (c == QChar::ObjectReplacementCharacter)
            c = u' ';
        else if (c == QChar::LineSeparator)
            c = u'\n';
    }
}

qint32 RichTextPositions::length() const
{
    return lastPosition(m_document) + m_document.blockCount() - 1;
}

qint32 RichTextPositions::toText(int documentPosition) const
{
    const int position = std::clamp(documentPosition, 0, lastPosition(m_document));
    return position + m_document.findBlock(position).blockNumber();
}

int RichTextPositions::toDocument(qint32 textPosition, Inside inside) const
{
    if (textPosition <= 0)
        return 0;
    if (textPosition >= length())
        return lastPosition(m_document);
    // The last paragraph that starts at or before the position.
    int low = 0;
    int high = m_document.blockCount() - 1;
    while (low < high) {
        const int middle = low + (high - low + 1) / 2;
        if (m_document.findBlockByNumber(middle).position() + middle <= textPosition)
            low = middle;
        else
            high = middle - 1;
    }
    const QTextBlock block = m_document.findBlockByNumber(low);
    const int offset = textPosition - (block.position() + low);
    const int end = block.length() - 1;
    if (offset > end)
        return block.position() + (inside == Inside::Before ? end : end + 1);
    return outsidePair(block.position() + offset, inside);
}

int RichTextPositions::outsidePair(int documentPosition, Inside inside) const
{
    const int position = std::clamp(documentPosition, 0, lastPosition(m_document));
    if (position == 0 || !m_document.characterAt(position).isLowSurrogate()
        || !m_document.characterAt(position - 1).isHighSurrogate())
        return position;
    return inside == Inside::Before ? position - 1 : position + 1;
}

QString RichTextPositions::text(int from, int to, QStringView lineBreak) const
{
    from = std::clamp(from, 0, lastPosition(m_document));
    to = std::clamp(to, from, lastPosition(m_document));
    const QTextBlock last = m_document.findBlock(to);
    QTextBlock block = m_document.findBlock(from);
    QString result;
    const qsizetype breaks = last.blockNumber() - block.blockNumber();
    result.reserve(to - from + breaks * (lineBreak.size() - 1));
    for (; block.isValid(); block = block.next()) {
        QString paragraph = block.text();
        showAsText(paragraph);
        const qsizetype start = std::max(0, from - block.position());
        const qsizetype end = std::min<qsizetype>(paragraph.size(), to - block.position());
        result += QStringView(paragraph).sliced(start, end - start);
        if (block == last)
            break;
        result += lineBreak;
    }
    return result;
}

} // namespace vandrel

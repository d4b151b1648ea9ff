#include "controls/RichTextPositions.h"

#include <algorithm>

#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>

namespace vandrel {

namespace {

int lastPosition(const QTextDocument &document)
{
    return document.characterCount() - 1;
}

// Only a cursor gives a part of a long paragraph without copying all of it. It changes nothing.
QString selectedCharacters(const QTextDocument &document, int from, int to)
{
    QTextCursor part(const_cast<QTextDocument *>(&document));
    part.setPosition(from);
    part.setPosition(to, QTextCursor::KeepAnchor);
    return part.selectedText();
}

// Among tables a cursor selects whole cells. Their borders end paragraphs as paragraph separators do.
QString blockCharacters(const QTextDocument &document, int from, int to)
{
    QString text;
    text.reserve(to - from);
    for (QTextBlock block = document.findBlock(from); block.isValid(); block = block.next()) {
        const QString paragraph = block.text();
        const qsizetype start = std::max(0, from - block.position());
        const qsizetype end = std::min<qsizetype>(paragraph.size(), to - block.position());
        text += QStringView(paragraph).sliced(start, end - start);
        if (block.position() + block.length() > to)
            break;
        text += QChar::ParagraphSeparator;
    }
    return text;
}

} // namespace

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

QString RichTextPositions::characters(int from, int to) const
{
    from = std::clamp(from, 0, lastPosition(m_document));
    to = std::clamp(to, from, lastPosition(m_document));
    QString text = m_document.rootFrame()->childFrames().isEmpty() ? selectedCharacters(m_document, from, to)
                                                                   : blockCharacters(m_document, from, to);
    for (QChar &c : text) {
        if (c == QChar::LineSeparator)
            c = u'\n';
        else if (c == QChar::ObjectReplacementCharacter)
            c = u' ';
    }
    return text;
}

QString RichTextPositions::text(int from, int to, QStringView lineBreak) const
{
    const QString raw = characters(from, to);
    QString result;
    result.reserve(raw.size() + raw.count(QChar::ParagraphSeparator) * (lineBreak.size() - 1));
    for (qsizetype start = 0; start <= raw.size();) {
        const qsizetype found = raw.indexOf(QChar::ParagraphSeparator, start);
        const qsizetype end = found < 0 ? raw.size() : found;
        result += QStringView(raw).sliced(start, end - start);
        if (found >= 0)
            result += lineBreak;
        start = end + 1;
    }
    return result;
}

} // namespace vandrel

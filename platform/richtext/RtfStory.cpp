#include "platform/richtext/RtfStory.h"

namespace vandrel {

/// A pair may come in two pieces. A first half that gets no second one becomes a replacement character, and so
/// does a second half that comes alone.
void RtfStory::append(QStringView text, int format)
{
    if (text.isEmpty())
        return;
    if (m_halfPair && text.front().isLowSurrogate()) {
        m_halfPair = false;
        m_text.append(text.front());
        ++m_open.back().length;
        append(text.sliced(1), format);
        return;
    }
    settleSurrogate();
    const qsizetype start = m_text.size();
    const bool mayJoin = !m_isMarked && !m_open.isEmpty() && !m_open.back().isListText;
    m_isMarked = false;
    if (mayJoin && m_open.back().format == format && m_open.back().start + m_open.back().length == start)
        m_open.back().length += text.size();
    else
        m_open.append({start, text.size(), format});
    joinSurrogates(text);
}

void RtfStory::joinSurrogates(QStringView text)
{
    bool awaited = false;
    const qsizetype start = m_text.size();
    m_text.append(text);
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text[i].isSurrogate() && !awaited)
            continue;
        const bool isSecond = text[i].isLowSurrogate();
        if (isSecond && !awaited)
            m_text[start + i] = QChar::ReplacementCharacter;
        if (!isSecond && awaited)
            m_text[start + i - 1] = QChar::ReplacementCharacter;
        awaited = text[i].isHighSurrogate();
    }
    m_halfPair = awaited;
}

void RtfStory::settleSurrogate()
{
    if (m_halfPair)
        m_text.back() = QChar::ReplacementCharacter;
    m_halfPair = false;
}

void RtfStory::endParagraph(RtfParagraph paragraph, int depth)
{
    settleSurrogate();
    if (!paragraph.list.isNone())
        m_open.removeIf([](const RtfRun &run) { return run.isListText; });
    paragraph.firstRun = m_runs.size();
    paragraph.runs = m_open.size();
    m_runs.append(m_open);
    m_open.clear();
    m_items.push_back(
        {RtfItem::Paragraph, static_cast<quint8>(depth), static_cast<qsizetype>(m_paragraphs.size())});
    m_paragraphs.push_back(paragraph);
}

void RtfStory::suspend()
{
    settleSurrogate();
    m_suspended.append(m_open);
    m_open.clear();
}

void RtfStory::resume()
{
    settleSurrogate();
    m_open = m_suspended.takeLast();
}

void RtfStory::joinLastParagraph()
{
    settleSurrogate();
    m_paragraphs.back().runs += m_open.size();
    m_runs.append(m_open);
    m_open.clear();
}

qsizetype RtfStory::mark()
{
    settleSurrogate();
    m_isMarked = true;
    return m_open.size();
}

void RtfStory::makeListText(qsizetype mark)
{
    settleSurrogate();
    for (qsizetype i = mark; i < m_open.size(); ++i)
        m_open[i].isListText = true;
}

RtfParagraph *RtfStory::lastParagraph()
{
    if (m_items.empty() || m_items.back().kind != RtfItem::Paragraph)
        return nullptr;
    return &m_paragraphs.back();
}

} // namespace vandrel

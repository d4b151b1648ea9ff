#include "platform/mail/text/FlowedText.h"

#include <algorithm>

namespace vandrel {

namespace {

// A line longer than this is written in pieces.
constexpr qsizetype longestLine = 64 * 1024;

bool breaksFlow(QChar character)
{
    return character == u'\n' || character == u'\r';
}

} // namespace

void FlowedText::add(QStringView text)
{
    while (!text.isEmpty()) {
        const auto found = std::find_if(text.begin(), text.end(), breaksFlow);
        const qsizetype length = found - text.begin();
        m_line.append(text.first(length));
        if (length > 0)
            m_afterReturn = false;
        if (found == text.end()) {
            if (m_line.size() > longestLine)
                breakOff();
            return;
        }
        const bool secondHalf = m_afterReturn && *found == u'\n';
        m_afterReturn = *found == u'\r';
        if (!secondHalf)
            endLine();
        text = text.sliced(length + 1);
    }
}

void FlowedText::finish()
{
    if (!m_line.isEmpty() || m_begun)
        endLine();
    m_out.startLine();
}

void FlowedText::beginLine()
{
    qsizetype depth = 0;
    while (depth < m_line.size() && m_line.at(depth) == u'>')
        ++depth;
    const bool stuffed = depth < m_line.size() && m_line.at(depth) == u' ';
    const QString quotation = m_line.left(depth);
    m_line.remove(0, depth + (stuffed ? 1 : 0));
    m_signature = m_line == u"-- ";
    const bool goesOn = m_flowing && depth == m_depth && !m_signature;
    if (!goesOn) {
        if (m_flowing)
            m_out.add(u"\n");
        m_out.add(quotation);
        if (depth > 0)
            m_out.add(u" ");
    }
    m_depth = depth;
    m_begun = true;
}

// Keeps the last character, which may be the blank that makes the line flow.
void FlowedText::breakOff()
{
    if (!m_begun)
        beginLine();
    if (m_line.isEmpty())
        return;
    const QString written = m_line.chopped(1);
    m_out.add(written);
    m_line.remove(0, written.size());
}

void FlowedText::endLine()
{
    if (!m_begun)
        beginLine();
    m_flowing = m_line.endsWith(u' ') && !m_signature;
    if (m_flowing && m_deletesSpace)
        m_line.chop(1);
    m_out.add(m_line);
    if (!m_flowing)
        m_out.add(u"\n");
    m_line.clear();
    m_begun = false;
}

} // namespace vandrel

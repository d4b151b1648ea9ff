#include "platform/mail/text/MailLines.h"

#include <algorithm>
#include <cstring>

#include <QIODevice>

namespace vandrel {

namespace {

constexpr qsizetype bufferSize = 256 * 1024;
// What follows a CR decides how long its line break is.
constexpr qsizetype lookAhead = 2;

} // namespace

MailLineReader::MailLineReader(QIODevice &device)
    : m_device(device), m_buffer(bufferSize, Qt::Uninitialized), m_atEnd(!device.seek(0))
{ }

bool MailLineReader::next(MailLine &line)
{
    for (;;) {
        const Break found = findBreak();
        const bool sure = found.at >= 0 && (m_atEnd || found.at + lookAhead < m_end);
        if (sure) {
            takeLine(line, found);
            return true;
        }
        if (m_atEnd) {
            if (m_begin == m_end)
                return false;
            takePiece(line);
            line.last = true;
            return true;
        }
        if (m_begin == 0 && m_end == m_buffer.size()) {
            takePiece(line);
            return true;
        }
        refill();
    }
}

QByteArrayView MailLineReader::skipToBefore(char octet)
{
    if (m_insideLine || m_offset + m_begin < m_plainTo)
        return {};
    const QByteArrayView rest(m_buffer.constData() + m_begin, m_end - m_begin);
    const auto beginsLine = [rest](qsizetype at) { return rest[at - 1] == '\n' || rest[at - 1] == '\r'; };
    qsizetype found = rest.indexOf(octet);
    while (found > 0 && !beginsLine(found))
        found = rest.indexOf(octet, found + 1);
    const qsizetype end = found < 0 ? rest.size() : found;
    m_plainTo = m_offset + m_begin + end;
    // The last octet may be of the line break that has to be told of.
    const qsizetype lineFeed = rest.first(std::max<qsizetype>(0, end - 1)).lastIndexOf('\n');
    m_begin += lineFeed + 1;
    return rest.first(lineFeed + 1);
}

QByteArrayView MailLineReader::rest()
{
    if (m_begin == m_end && !m_atEnd)
        refill();
    const QByteArrayView piece(m_buffer.constData() + m_begin, m_end - m_begin);
    m_begin = m_end;
    return piece;
}

void MailLineReader::refill()
{
    char *const data = m_buffer.data();
    std::memmove(data, data + m_begin, static_cast<std::size_t>(m_end - m_begin));
    m_offset += m_begin;
    m_end -= m_begin;
    m_begin = 0;
    m_lineFeed = -1;
    const qint64 got = m_device.read(data + m_end, m_buffer.size() - m_end);
    m_atEnd = got <= 0;
    m_end += std::max<qint64>(got, 0);
}

void MailLineReader::takeLine(MailLine &line, Break lineBreak)
{
    line.octets = QByteArrayView(m_buffer.constData() + m_begin, lineBreak.at - m_begin);
    line.offset = m_offset + m_begin;
    m_begin = lineBreak.at + lineBreak.length;
    line.next = m_offset + m_begin;
    line.first = !m_insideLine;
    line.last = true;
    m_insideLine = false;
}

// All there is but what may belong to a line break at the end.
void MailLineReader::takePiece(MailLine &line)
{
    const qsizetype kept = m_atEnd ? 0 : lookAhead;
    line.octets = QByteArrayView(m_buffer.constData() + m_begin, m_end - m_begin - kept);
    line.offset = m_offset + m_begin;
    m_begin = m_end - kept;
    line.next = m_offset + m_begin;
    line.first = !m_insideLine;
    line.last = false;
    m_insideLine = !m_atEnd;
}

MailLineReader::Break MailLineReader::findBreak()
{
    const qsizetype lineFeed = nearestLineFeed();
    const char *const begin = m_buffer.constData() + m_begin;
    const auto *const found
        = static_cast<const char *>(std::memchr(begin, '\r', static_cast<std::size_t>(lineFeed - m_begin)));
    if (found) {
        const qsizetype at = found - m_buffer.constData();
        return {at, lengthOfReturn(at)};
    }
    return lineFeed < m_end ? Break{lineFeed, 1} : Break{};
}

qsizetype MailLineReader::lengthOfReturn(qsizetype at) const
{
    const QByteArrayView rest(m_buffer.constData() + at, std::min(m_end - at, lookAhead + 1));
    if (rest.startsWith("\r\n"))
        return 2;
    return rest.startsWith("\r\r\n") ? 3 : 1;
}

// Looked for once: a mail full of CRs would otherwise be searched to its end for each of them.
qsizetype MailLineReader::nearestLineFeed()
{
    if (m_lineFeed < m_begin) {
        const char *const begin = m_buffer.constData() + m_begin;
        const void *const found = std::memchr(begin, '\n', static_cast<std::size_t>(m_end - m_begin));
        m_lineFeed = found ? static_cast<const char *>(found) - m_buffer.constData() : m_end;
    }
    return m_lineFeed;
}

} // namespace vandrel

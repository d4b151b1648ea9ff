#include "platform/richtext/RtfWriterOutput.h"

namespace vandrel {

namespace {

constexpr qsizetype pieceSize = 64 * 1024;

// The characters that have a spelling of their own; null for the others.
const char *spellingOf(char16_t unit)
{
    switch (unit) {
    case u'\\':
        return "\\\\";
    case u'{':
        return "\\{";
    case u'}':
        return "\\}";
    case u'\t':
        return "\\tab ";
    case u'\f':
        return "\\page ";
    case 0x00A0:
        return "\\~";
    case 0x00AD:
        return "\\-";
    case 0x2011:
        return "\\_";
    case 0x2028:
        return "\\line ";
    default:
        return nullptr;
    }
}

void appendUnicode(QByteArray &to, char16_t unit)
{
    to += "\\u";
    to += QByteArray::number(static_cast<qint16>(unit));
    to += '?';
}

} // namespace

void appendRtfText(QByteArray &to, QStringView text)
{
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (const char *spelling = spellingOf(unit))
            to += spelling;
        else if (unit >= 0x7F)
            appendUnicode(to, unit);
        else if (unit >= 0x20)
            to += static_cast<char>(unit);
    }
}

void appendRtfWord(QByteArray &to, const char *name, int number)
{
    to += '\\';
    to += name;
    to += QByteArray::number(number);
}

QByteArrayView insideRtfGroup(QByteArrayView group)
{
    return group.size() < 2 ? QByteArrayView() : group.sliced(1, group.size() - 2);
}

RtfOutput::RtfOutput(QIODevice &device) : m_device(device)
{
    m_pending.reserve(2 * pieceSize);
}

RtfOutput &RtfOutput::operator<<(QByteArrayView octets)
{
    m_pending.append(octets);
    if (m_pending.size() >= pieceSize)
        flush();
    return *this;
}

void RtfOutput::text(QStringView text)
{
    appendRtfText(m_pending, text);
    if (m_pending.size() >= pieceSize)
        flush();
}

void RtfOutput::flush()
{
    if (m_sound)
        m_sound = m_device.write(m_pending) == m_pending.size();
    m_pending.resize(0);
}

} // namespace vandrel

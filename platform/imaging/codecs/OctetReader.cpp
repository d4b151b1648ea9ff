#include "platform/imaging/codecs/OctetReader.h"

#include <algorithm>
#include <cstring>

namespace vandrel {

namespace {

constexpr std::size_t bufferSize = 128 * 1024;

} // namespace

OctetReader::OctetReader(QIODevice &device) : m_device(device), m_size(device.size()), m_buffer(bufferSize)
{
    m_device.seek(0);
}

void OctetReader::seek(qint64 position)
{
    const qint64 inBuffer = position - m_bufferAt;
    if (inBuffer >= 0 && inBuffer <= m_filled) {
        m_next = inBuffer;
        return;
    }
    m_next = 0;
    m_filled = 0;
    m_bufferAt = position >= 0 && position <= m_size && m_device.seek(position) ? position : m_size;
    if (m_bufferAt == m_size)
        m_device.seek(m_size);
}

bool OctetReader::fill()
{
    m_bufferAt += m_filled;
    m_next = 0;
    m_filled = std::max<qint64>(
        0, m_device.read(reinterpret_cast<char *>(m_buffer.data()), static_cast<qint64>(m_buffer.size())));
    m_ended = m_ended || m_filled == 0;
    return m_filled > 0;
}

std::uint16_t OctetReader::u16()
{
    const std::uint16_t low = octet();
    return static_cast<std::uint16_t>(low | octet() << 8);
}

std::uint32_t OctetReader::u32()
{
    const std::uint32_t low = u16();
    return low | static_cast<std::uint32_t>(u16()) << 16;
}

bool OctetReader::read(std::uint8_t *to, qint64 octets)
{
    while (octets > 0) {
        if (m_next == m_filled && !fill()) {
            std::memset(to, 0, static_cast<std::size_t>(octets));
            return false;
        }
        const qint64 count = std::min(octets, m_filled - m_next);
        std::memcpy(to, &m_buffer[static_cast<std::size_t>(m_next)], static_cast<std::size_t>(count));
        m_next += count;
        to += count;
        octets -= count;
    }
    return true;
}

} // namespace vandrel

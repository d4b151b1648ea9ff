#pragma once

#include <vector>

#include <QByteArray>
#include <QIODevice>

namespace vandrel {

/// Reads a file's octets through a buffer; numbers are little-endian. Behind the end there are zeros without end, and
/// `ended` tells. The device must be able to go to any position.
class OctetReader
{
public:
    explicit OctetReader(QIODevice &device);

    qint64 size() const { return m_size; }
    qint64 position() const { return m_bufferAt + m_next; }
    /// Octets from here to the end.
    qint64 left() const { return m_size - position(); }
    /// Whether anything was read from behind the end.
    bool ended() const { return m_ended; }

    /// Goes to a position of the file; anywhere else is behind the end.
    void seek(qint64 position);
    void skip(qint64 octets) { seek(position() + octets); }

    std::uint8_t octet()
    {
        if (m_next == m_filled && !fill())
            return 0;
        return m_buffer[static_cast<std::size_t>(m_next++)];
    }
    std::uint16_t u16();
    std::uint32_t u32();
    std::int16_t s16() { return static_cast<std::int16_t>(u16()); }
    std::int32_t s32() { return static_cast<std::int32_t>(u32()); }

    /// Copies octets, zeros from the end on; false where any of them were.
    bool read(std::uint8_t *to, qint64 octets);

private:
    bool fill();

    QIODevice &m_device;
    qint64 m_size;
    std::vector<std::uint8_t> m_buffer;
    /// Where the buffer's first octet lies in the file.
    qint64 m_bufferAt = 0;
    qint64 m_next = 0;
    qint64 m_filled = 0;
    bool m_ended = false;
};

} // namespace vandrel

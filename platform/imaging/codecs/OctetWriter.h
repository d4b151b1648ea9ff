#pragma once

#include <algorithm>
#include <vector>

#include <QIODevice>

namespace vandrel {

/// Collects octets and writes them in large pieces; numbers are little-endian. Failures are the device's to tell.
class OctetWriter
{
public:
    explicit OctetWriter(QIODevice &device) : m_device(device), m_buffer(capacity) { }
    ~OctetWriter() { flush(); }
    OctetWriter(const OctetWriter &) = delete;
    OctetWriter &operator=(const OctetWriter &) = delete;

    void octet(int value)
    {
        if (m_used == m_buffer.size())
            flush();
        m_buffer[m_used++] = static_cast<char>(value);
    }
    void u16(std::uint32_t value)
    {
        octet(static_cast<int>(value & 255));
        octet(static_cast<int>(value >> 8 & 255));
    }
    void u32(std::uint32_t value)
    {
        u16(value & 0xFFFF);
        u16(value >> 16);
    }
    void write(const std::uint8_t *from, qint64 count)
    {
        const auto octets = static_cast<std::size_t>(count);
        if (octets > m_buffer.size() - m_used)
            flush();
        if (octets > m_buffer.size()) {
            m_device.write(reinterpret_cast<const char *>(from), count);
            return;
        }
        std::copy_n(from, count, m_buffer.begin() + static_cast<std::ptrdiff_t>(m_used));
        m_used += octets;
    }
    void fill(int value, qint64 count)
    {
        for (qint64 octetsLeft = count; octetsLeft > 0; --octetsLeft)
            octet(value);
    }
    void flush()
    {
        m_device.write(m_buffer.data(), static_cast<qint64>(m_used));
        m_used = 0;
    }

    /// Where the next octet goes in the file.
    qint64 position() const { return m_device.pos() + static_cast<qint64>(m_used); }
    /// Goes to another place, of a device that can.
    void seek(qint64 position)
    {
        flush();
        m_device.seek(position);
    }

private:
    static constexpr std::size_t capacity = 256 * 1024;

    QIODevice &m_device;
    std::vector<char> m_buffer;
    std::size_t m_used = 0;
};

} // namespace vandrel

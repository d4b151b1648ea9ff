#pragma once

#include <QByteArray>
#include <QIODevice>

namespace vandrel {

/// Collects octets and writes them in large pieces; numbers are little-endian. Failures are the device's to tell.
class OctetWriter
{
public:
    explicit OctetWriter(QIODevice &device) : m_device(device) { m_buffer.reserve(capacity); }
    ~OctetWriter() { flush(); }
    OctetWriter(const OctetWriter &) = delete;
    OctetWriter &operator=(const OctetWriter &) = delete;

    void octet(int value)
    {
        const auto single = static_cast<std::uint8_t>(value);
        write(&single, 1);
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
        if (m_buffer.size() + count > capacity)
            flush();
        if (count > capacity)
            m_device.write(reinterpret_cast<const char *>(from), count);
        else
            m_buffer.append(reinterpret_cast<const char *>(from), count);
    }
    void fill(int value, qint64 count) { m_buffer.append(count, static_cast<char>(value)); }
    void flush()
    {
        m_device.write(m_buffer);
        m_buffer.resize(0);
    }

private:
    static constexpr qsizetype capacity = 256 * 1024;

    QIODevice &m_device;
    QByteArray m_buffer;
};

} // namespace vandrel

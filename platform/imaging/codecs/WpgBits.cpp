#include "platform/imaging/codecs/WpgBits.h"

#include <algorithm>
#include <array>

namespace vandrel {

namespace {

/// Where decoded octets go: never behind the last row.
class RowSink
{
public:
    explicit RowSink(PackedPixels &pixels) : m_pixels(pixels) { }
    ~RowSink() { m_pixels.rowsRead = static_cast<int>(m_at / static_cast<std::size_t>(m_pixels.rowLength)); }
    RowSink(const RowSink &) = delete;
    RowSink &operator=(const RowSink &) = delete;

    bool isFull() const { return m_at >= m_pixels.octets.size(); }
    bool isAtRowStart() const { return m_at % static_cast<std::size_t>(m_pixels.rowLength) == 0; }
    bool isInFirstRow() const { return m_at < static_cast<std::size_t>(m_pixels.rowLength); }

    void put(std::uint8_t octet)
    {
        if (isFull())
            return;
        const std::uint8_t above = m_isDifference && !isInFirstRow()
            ? m_pixels.octets[m_at - static_cast<std::size_t>(m_pixels.rowLength)]
            : 0;
        m_pixels.octets[m_at++] = octet ^ above;
    }

    void put(std::uint8_t octet, int count)
    {
        for (int index = 0; index < count; ++index)
            put(octet);
    }

    /// Repeats the row before; false where there is none.
    bool repeatRow(int times)
    {
        if (!isAtRowStart() || isInFirstRow())
            return false;
        const auto length = static_cast<std::size_t>(m_pixels.rowLength);
        for (; times > 0 && !isFull(); --times) {
            std::copy_n(m_pixels.octets.begin() + static_cast<std::ptrdiff_t>(m_at - length), length,
                        m_pixels.octets.begin() + static_cast<std::ptrdiff_t>(m_at));
            m_at += length;
        }
        return true;
    }

    /// From here on, octets are differences from those above, or no longer.
    void toggleDifference() { m_isDifference = !m_isDifference; }

private:
    PackedPixels &m_pixels;
    std::size_t m_at = 0;
    bool m_isDifference = false;
};

bool hasMore(const OctetReader &file, qint64 end)
{
    return file.position() < end && !file.ended();
}

/// The runs of version 2.
class UnitRuns
{
public:
    UnitRuns(OctetReader &file, RowSink &sink) : m_file(file), m_sink(sink) { }

    /// Reads one code; false where it makes no sense.
    bool readOne()
    {
        const int code = m_file.octet();
        switch (code) {
        case 0x7D:
            m_size = std::clamp<int>(m_file.octet(), 1, static_cast<int>(m_unit.size()));
            return true;
        case 0x7E:
            m_sink.toggleDifference();
            return true;
        case 0x7F:
            m_sink.put(0x00, m_size * (m_file.octet() + 1));
            return true;
        case 0xFD:
            putUnits(m_file.octet() + 1);
            return true;
        case 0xFE:
            return m_sink.repeatRow(m_file.octet() + 1);
        case 0xFF:
            m_sink.put(0xFF, m_size * (m_file.octet() + 1));
            return true;
        default:
            break;
        }
        const int count = (code & 0x7F) + 1;
        if (code & 0x80) {
            for (int index = 0; index < m_size; ++index)
                m_unit[static_cast<std::size_t>(index)] = m_file.octet();
            putUnits(count);
        } else {
            for (int index = 0; index < count * m_size; ++index)
                m_sink.put(m_file.octet());
        }
        return true;
    }

private:
    void putUnits(int count)
    {
        for (; count > 0; --count) {
            for (int index = 0; index < m_size; ++index)
                m_sink.put(m_unit[static_cast<std::size_t>(index)]);
        }
    }

    OctetReader &m_file;
    RowSink &m_sink;
    int m_size = 1;
    std::array<std::uint8_t, 255> m_unit{};
};

} // namespace

void readWpg1Runs(OctetReader &file, qint64 end, PackedPixels &pixels)
{
    RowSink sink(pixels);
    while (!sink.isFull() && hasMore(file, end)) {
        const int code = file.octet();
        const int count = code & 0x7F;
        if (code & 0x80) {
            const int length = count > 0 ? count : file.octet();
            sink.put(count > 0 ? file.octet() : std::uint8_t{0xFF}, length);
        } else if (count > 0) {
            for (int index = 0; index < count; ++index)
                sink.put(file.octet());
        } else if (!sink.repeatRow(file.octet())) {
            return;
        }
    }
}

void readWpg2Runs(OctetReader &file, qint64 end, PackedPixels &pixels)
{
    RowSink sink(pixels);
    UnitRuns runs(file, sink);
    while (!sink.isFull() && hasMore(file, end)) {
        if (!runs.readOne())
            return;
    }
}

} // namespace vandrel

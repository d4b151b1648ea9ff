#include "platform/imaging/codecs/WpgBits.h"

#include <algorithm>
#include <array>

namespace vandrel {

namespace {

bool hasMore(const OctetReader &file, qint64 end)
{
    return file.position() < end && !file.ended();
}

/// The runs of version 2.
class UnitRuns
{
public:
    UnitRuns(OctetReader &file, PackedRows &rows) : m_file(file), m_rows(rows) { }

    /// Reads one code; false where it makes no sense.
    bool readOne()
    {
        const int code = m_file.octet();
        switch (code) {
        case 0x7D:
            m_size = std::clamp<int>(m_file.octet(), 1, static_cast<int>(m_unit.size()));
            return true;
        case 0x7E:
            m_rows.toggleDifference();
            return true;
        case 0x7F:
            m_rows.put(0x00, m_size * (m_file.octet() + 1));
            return true;
        case 0xFD:
            putUnits(m_file.octet() + 1);
            return true;
        case 0xFE:
            return m_rows.repeatRow(m_file.octet() + 1);
        case 0xFF:
            m_rows.put(0xFF, m_size * (m_file.octet() + 1));
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
                m_rows.put(m_file.octet());
        }
        return true;
    }

private:
    void putUnits(int count)
    {
        for (; count > 0; --count) {
            for (int index = 0; index < m_size; ++index)
                m_rows.put(m_unit[static_cast<std::size_t>(index)]);
        }
    }

    OctetReader &m_file;
    PackedRows &m_rows;
    int m_size = 1;
    std::array<std::uint8_t, 255> m_unit{};
};

} // namespace

PackedRows::PackedRows(std::int64_t rowLength, int rows, TakeRow take)
    : m_row(static_cast<std::size_t>(rowLength)), m_above(static_cast<std::size_t>(rowLength)), m_rows(rows),
      m_take(std::move(take))
{ }

bool PackedRows::repeatRow(int times)
{
    if (m_at != 0 || m_y == 0)
        return false;
    for (; times > 0 && !isFull(); --times)
        m_take(m_y++, m_above.data());
    return true;
}

void PackedRows::finish()
{
    if (isFull() || m_at == 0)
        return;
    std::fill(m_row.begin() + static_cast<std::ptrdiff_t>(m_at), m_row.end(), std::uint8_t{0});
    m_take(m_y, m_row.data());
}

void PackedRows::endRow()
{
    m_take(m_y++, m_row.data());
    m_row.swap(m_above);
    m_at = 0;
}

void readWpg1Runs(OctetReader &file, qint64 end, PackedRows &rows)
{
    while (!rows.isFull() && hasMore(file, end)) {
        const int code = file.octet();
        const int count = code & 0x7F;
        if (code & 0x80) {
            const int length = count > 0 ? count : file.octet();
            rows.put(count > 0 ? file.octet() : std::uint8_t{0xFF}, length);
        } else if (count > 0) {
            for (int index = 0; index < count; ++index)
                rows.put(file.octet());
        } else if (!rows.repeatRow(file.octet())) {
            return;
        }
    }
}

void readWpg2Runs(OctetReader &file, qint64 end, PackedRows &rows)
{
    UnitRuns runs(file, rows);
    while (!rows.isFull() && hasMore(file, end)) {
        if (!runs.readOne())
            return;
    }
}

} // namespace vandrel

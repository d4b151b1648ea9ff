#pragma once

#include <functional>
#include <vector>

#include "platform/imaging/codecs/Decoding.h"
#include "platform/imaging/codecs/OctetReader.h"

namespace vandrel {

/// Takes the packed octets of a bitmap record in their order and hands on each row once it is whole. Octets behind the
/// last row are dropped.
class PackedRows
{
public:
    using TakeRow = std::function<void(int y, const std::uint8_t *row)>;

    PackedRows(std::int64_t rowLength, int rows, TakeRow take);

    /// How many rows are whole.
    int rowsRead() const { return m_y; }
    bool isFull() const { return m_y >= m_rows; }

    void put(std::uint8_t octet)
    {
        if (isFull())
            return;
        // There is nothing above the first row, which is all zeros.
        m_row[m_at] = m_isDifference ? octet ^ m_above[m_at] : octet;
        if (++m_at == m_row.size())
            endRow();
    }
    void put(std::uint8_t octet, int count)
    {
        for (int index = 0; index < count; ++index)
            put(octet);
    }
    /// Repeats the row before; false where there is none.
    bool repeatRow(int times);
    /// From here on, octets are differences from those above, or no longer.
    void toggleDifference() { m_isDifference = !m_isDifference; }
    /// Hands on what there is of the row that is not whole.
    void finish();

private:
    void endRow();

    std::vector<std::uint8_t> m_row;
    std::vector<std::uint8_t> m_above;
    int m_rows;
    TakeRow m_take;
    int m_y = 0;
    std::size_t m_at = 0;
    bool m_isDifference = false;
};

/// Reads the run-length code of version 1: counts of octets, of FFh, and repeated rows. `end` is where the record ends.
void readWpg1Runs(OctetReader &file, qint64 end, PackedRows &rows);
/// Reads that of version 2, whose runs are of units of one or more octets.
void readWpg2Runs(OctetReader &file, qint64 end, PackedRows &rows);

} // namespace vandrel

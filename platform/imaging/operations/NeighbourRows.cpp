#include "platform/imaging/operations/NeighbourRows.h"

#include <algorithm>
#include <cstring>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/PixelPlanes.h"
#include "platform/imaging/operations/Rounding.h"

namespace vandrel {

namespace {

enum class RowContent { Pixels, Luma };

void copyPixel(const std::uint8_t *from, int octets, RowContent content, std::uint8_t *&to)
{
    if (content == RowContent::Pixels) {
        to = std::copy_n(from, octets, to);
        return;
    }
    *to++ = octets == 1 ? *from : static_cast<std::uint8_t>(luma(from[2], from[1], from[0]));
}

/// The picture's row y, or the one it is mirrored to, from one pixel left of the area to one right of it.
void paddedRow(ValueRows &source, const PixelArea &area, int y, RowContent content, std::uint8_t *to)
{
    const int row = mirrored(y, source.height());
    const int octets = source.channels();
    copyPixel(source.at(mirrored(area.left - 1, source.width()), row, 1), octets, content, to);
    const std::uint8_t *from = source.at(area.left, row, area.width);
    if (content == RowContent::Pixels || octets == 1) {
        to = std::copy_n(from, static_cast<std::ptrdiff_t>(area.width) * octets, to);
    } else {
        lumaRow(from, area.width, octets, to);
        to += area.width;
    }
    copyPixel(source.at(mirrored(area.right(), source.width()), row, 1), octets, content, to);
}

void mapBand(Workspace &work, RowContent content, const NeighbourMap &map, int first, int end)
{
    ValueRows source = work.source();
    const PixelArea &area = work.area();
    const int octets = content == RowContent::Luma ? 1 : source.channels();
    const std::size_t length = (static_cast<std::size_t>(area.width) + 2) * static_cast<std::size_t>(octets);
    std::vector<std::uint8_t> memory(length * 3);
    std::array<std::uint8_t *, 3> rows{memory.data(), memory.data() + length, memory.data() + length * 2};
    paddedRow(source, area, first - 1, content, rows[0]);
    paddedRow(source, area, first, content, rows[1]);
    for (int y = first; y < end; ++y) {
        paddedRow(source, area, y + 1, content, rows[2]);
        map({rows[0], rows[1], rows[2], octets, source}, y, work.targetRow(y));
        std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    }
}

} // namespace

void mapNeighbours(Workspace &work, const NeighbourMap &map)
{
    inBands(work.area(), work.progress(),
            [&](int first, int end) { mapBand(work, RowContent::Pixels, map, first, end); });
}

void mapLumaNeighbours(Workspace &work, const NeighbourMap &map)
{
    inBands(work.area(), work.progress(),
            [&](int first, int end) { mapBand(work, RowContent::Luma, map, first, end); });
}

} // namespace vandrel

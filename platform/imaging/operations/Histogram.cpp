#include "platform/imaging/operations/Histogram.h"

#include <mutex>

#include "platform/imaging/operations/Bands.h"

namespace vandrel {

namespace {

using Counts = std::array<std::uint32_t, 256>;

/// Counts one row. Two sets of counters, since runs of equal pixels would wait for one counter.
void countRow(const std::uint8_t *row, int width, int channels, Counts &even, Counts &odd)
{
    if (channels == 1) {
        for (int x = 0; x < width; ++x)
            ++(x & 1 ? odd : even)[row[x]];
        return;
    }
    for (int x = 0; x < width; ++x, row += channels)
        ++(x & 1 ? odd : even)[static_cast<std::size_t>(luma(row[2], row[1], row[0]))];
}

/// How often each value of a pixel occurs: palette numbers of indexed pictures, else brightness.
Histogram valueHistogram(const ConstPixelView &view, const PixelArea &area)
{
    Histogram total{};
    std::mutex mutex;
    inBands(area, {}, [&](int first, int end) {
        Counts even{};
        Counts odd{};
        for (int y = first; y < end; ++y)
            countRow(view.at(area.left, y), area.width, view.channels, even, odd);
        const std::lock_guard lock(mutex);
        for (std::size_t value = 0; value < total.size(); ++value)
            total[value] += std::int64_t{even[value]} + odd[value];
    });
    return total;
}

} // namespace

Histogram lumaHistogram(const Raster &picture, const PixelArea &area)
{
    const Histogram values = valueHistogram(picture.view(), area);
    if (!picture.isIndexed())
        return values;
    Histogram brightness{};
    for (std::size_t number = 0; number < picture.palette().size(); ++number)
        brightness[static_cast<std::size_t>(luma(picture.palette()[number]))] += values[number];
    return brightness;
}

} // namespace vandrel

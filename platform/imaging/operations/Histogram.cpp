#include "platform/imaging/operations/Histogram.h"

#include <mutex>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/PixelPlanes.h"

namespace vandrel {

namespace {

/// Several counters for each value, since pixels that are alike would wait for one.
class Counters
{
public:
    void count(const std::uint8_t *values, int number)
    {
        int index = 0;
        for (; index + 4 <= number; index += 4) {
            ++m_counts[0][values[index]];
            ++m_counts[1][values[index + 1]];
            ++m_counts[2][values[index + 2]];
            ++m_counts[3][values[index + 3]];
        }
        for (; index < number; ++index)
            ++m_counts[0][values[index]];
    }

    void addTo(Histogram &total) const
    {
        for (const auto &counts : m_counts) {
            for (std::size_t value = 0; value < total.size(); ++value)
                total[value] += counts[value];
        }
    }

private:
    std::array<std::array<std::uint32_t, 256>, 4> m_counts{};
};

/// How often each value of a pixel occurs: palette numbers of indexed pictures, else brightness.
Histogram valueHistogram(const ConstPixelView &view, const PixelArea &area)
{
    Histogram total{};
    std::mutex mutex;
    inBands(area, {}, [&](int first, int end) {
        Counters counters;
        std::vector<std::uint8_t> brightness(static_cast<std::size_t>(area.width));
        for (int y = first; y < end; ++y) {
            const std::uint8_t *values = view.at(area.left, y);
            if (view.channels != 1) {
                lumaRow(values, area.width, view.channels, brightness.data());
                values = brightness.data();
            }
            counters.count(values, area.width);
        }
        const std::lock_guard lock(mutex);
        counters.addTo(total);
    });
    return total;
}

} // namespace

Histogram numberHistogram(const Raster &picture)
{
    return valueHistogram(picture.view(), picture.area());
}

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

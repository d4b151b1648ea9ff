#include "platform/imaging/operations/NearestColour.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace vandrel {

namespace {

int squared(int value)
{
    return value * value;
}

/// The squares of the distances of a level from the nearest and the furthest level of a cell.
std::pair<int, int> distances(int level, int low, int high)
{
    const int nearestApart = level < low ? low - level : std::max(level - high, 0);
    const int furthestApart = std::max(std::abs(level - low), std::abs(level - high));
    return {squared(nearestApart), squared(furthestApart)};
}

} // namespace

NearestColour::NearestColour(Palette palette)
    : m_palette(std::move(palette)), m_cells(std::size_t{1} << 3 * placeBits, unknown)
{ }

std::uint32_t NearestColour::candidatesOf(int red, int green, int blue)
{
    // Whatever is further from all of the cell than some colour is from its furthest corner is nearest nowhere in it.
    constexpr int inside = (1 << cellBits) - 1;
    std::vector<int> least(m_palette.size());
    int bound = std::numeric_limits<int>::max();
    for (std::size_t number = 0; number < m_palette.size(); ++number) {
        const auto inRed = distances(m_palette[number].red, red & ~inside, red | inside);
        const auto inGreen = distances(m_palette[number].green, green & ~inside, green | inside);
        const auto inBlue = distances(m_palette[number].blue, blue & ~inside, blue | inside);
        least[number] = inRed.first + inGreen.first + inBlue.first;
        bound = std::min(bound, inRed.second + inGreen.second + inBlue.second);
    }
    const auto first = static_cast<std::uint32_t>(m_groups.size());
    constexpr std::size_t together = std::tuple_size_v<Candidates>;
    std::size_t count = 0;
    for (std::size_t number = 0; number < m_palette.size(); ++number) {
        if (least[number] > bound)
            continue;
        if (count % together == 0)
            m_groups.emplace_back();
        const Colour colour = m_palette[number];
        const auto candidate = static_cast<std::uint32_t>(colour.red)
            | static_cast<std::uint32_t>(colour.green) << 8 | static_cast<std::uint32_t>(colour.blue) << 16
            | static_cast<std::uint32_t>(number) << 24;
        std::fill(m_groups.back().begin() + static_cast<std::ptrdiff_t>(count % together),
                  m_groups.back().end(), candidate);
        ++count;
    }
    return first << countBits | static_cast<std::uint32_t>((count - 1) / together);
}

} // namespace vandrel

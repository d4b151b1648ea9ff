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

/// The squares of the distances of a level from the nearest and the furthest of the four levels of a cell.
std::pair<int, int> distances(int level, int low)
{
    const int high = low + 3;
    const int nearestApart = level < low ? low - level : std::max(level - high, 0);
    const int furthestApart = std::max(std::abs(level - low), std::abs(level - high));
    return {squared(nearestApart), squared(furthestApart)};
}

} // namespace

NearestColour::NearestColour(Palette palette)
    : m_palette(std::move(palette)), m_cells(std::size_t{1} << 18, unknown)
{ }

std::int32_t NearestColour::candidatesOf(int red, int green, int blue)
{
    // Whatever is further from all of the cell than some colour is from its furthest corner is nearest nowhere in it.
    std::vector<int> least(m_palette.size());
    int bound = std::numeric_limits<int>::max();
    for (std::size_t number = 0; number < m_palette.size(); ++number) {
        const auto inRed = distances(m_palette[number].red, red & ~3);
        const auto inGreen = distances(m_palette[number].green, green & ~3);
        const auto inBlue = distances(m_palette[number].blue, blue & ~3);
        least[number] = inRed.first + inGreen.first + inBlue.first;
        bound = std::min(bound, inRed.second + inGreen.second + inBlue.second);
    }
    Numbers candidates;
    for (std::size_t number = 0; number < m_palette.size(); ++number) {
        if (least[number] <= bound)
            candidates.push_back(static_cast<std::uint8_t>(number));
    }
    m_lists.push_back(std::move(candidates));
    return static_cast<std::int32_t>(m_lists.size() - 1);
}

std::uint8_t NearestColour::nearest(const Numbers &candidates, int red, int green, int blue) const
{
    int least = std::numeric_limits<int>::max();
    std::uint8_t found = candidates.front();
    for (const std::uint8_t number : candidates) {
        const Colour colour = m_palette[number];
        const int apart
            = squared(red - colour.red) + squared(green - colour.green) + squared(blue - colour.blue);
        if (apart < least) {
            least = apart;
            found = number;
        }
    }
    return found;
}

} // namespace vandrel

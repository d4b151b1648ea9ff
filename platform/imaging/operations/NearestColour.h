#pragma once

#include <vector>

#include "platform/imaging/raster/Colour.h"

namespace vandrel {

/// Finds the nearest of up to 256 colours, by the sum of the squared differences; the first of equally near ones.
/// Remembers, six bits a colour, which of them can be the nearest anywhere in a cell of that size, and compares those
/// alone. One thread at a time.
class NearestColour
{
public:
    explicit NearestColour(Palette palette);

    /// The number of the colour nearest to these levels.
    std::uint8_t find(int red, int green, int blue)
    {
        const std::size_t cell = static_cast<std::size_t>(red >> 2) << 12
            | static_cast<std::size_t>(green >> 2) << 6 | static_cast<std::size_t>(blue >> 2);
        if (m_cells[cell] == unknown)
            m_cells[cell] = candidatesOf(red, green, blue);
        return nearest(m_lists[static_cast<std::size_t>(m_cells[cell])], red, green, blue);
    }

    const Palette &palette() const { return m_palette; }

private:
    using Numbers = std::vector<std::uint8_t>;

    static constexpr std::int32_t unknown = -1;

    /// Makes the list of the cell that holds these levels; gives its place.
    std::int32_t candidatesOf(int red, int green, int blue);
    std::uint8_t nearest(const Numbers &candidates, int red, int green, int blue) const;

    Palette m_palette;
    /// The place of each cell's list.
    std::vector<std::int32_t> m_cells;
    std::vector<Numbers> m_lists;
};

} // namespace vandrel

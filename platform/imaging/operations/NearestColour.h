#pragma once

#include <vector>

#include "platform/imaging/raster/Colour.h"

namespace vandrel {

/// Finds the nearest of up to 256 colours, by the sum of the squared differences; the first of equally near ones. Remembers
/// what it found, six bits a colour at first: a cell of that size whose corners all have the same nearest colour
/// needs no further search. One thread at a time.
class NearestColour
{
public:
    explicit NearestColour(Palette palette);

    /// The number of the colour nearest to these levels.
    std::uint8_t find(int red, int green, int blue)
    {
        const std::size_t cell = static_cast<std::size_t>(red >> 2) << 12
            | static_cast<std::size_t>(green >> 2) << 6 | static_cast<std::size_t>(blue >> 2);
        const std::int16_t known = m_cells[cell];
        return known >= 0 ? static_cast<std::uint8_t>(known) : search(cell, red, green, blue);
    }

    const Palette &palette() const { return m_palette; }

private:
    std::uint8_t search(std::size_t cell, int red, int green, int blue);
    std::uint8_t nearest(int red, int green, int blue) const;

    Palette m_palette;
    /// The one colour of a cell, -1 where nothing is known yet, -2 where it has several.
    std::vector<std::int16_t> m_cells;
};

} // namespace vandrel

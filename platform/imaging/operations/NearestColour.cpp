#include "platform/imaging/operations/NearestColour.h"

#include <limits>
#include <utility>

namespace vandrel {

namespace {

constexpr std::int16_t unknown = -1;
constexpr std::int16_t several = -2;

} // namespace

NearestColour::NearestColour(Palette palette)
    : m_palette(std::move(palette)), m_cells(std::size_t{1} << 18, unknown)
{ }

std::uint8_t NearestColour::search(std::size_t cell, int red, int green, int blue)
{
    if (m_cells[cell] == several)
        return nearest(red, green, blue);
    const int lowRed = red & ~3;
    const int lowGreen = green & ~3;
    const int lowBlue = blue & ~3;
    // The colours nearest to some one fill a convex body: what all corners share, the whole cell has.
    const std::uint8_t first = nearest(lowRed, lowGreen, lowBlue);
    m_cells[cell] = first;
    for (int corner = 1; corner < 8; ++corner) {
        const int other = nearest(lowRed + (corner & 1) * 3, lowGreen + (corner >> 1 & 1) * 3,
                                  lowBlue + (corner >> 2) * 3);
        if (other != first)
            m_cells[cell] = several;
    }
    return m_cells[cell] == several ? nearest(red, green, blue) : first;
}

std::uint8_t NearestColour::nearest(int red, int green, int blue) const
{
    int least = std::numeric_limits<int>::max();
    std::size_t found = 0;
    for (std::size_t number = 0; number < m_palette.size(); ++number) {
        const int apartRed = red - m_palette[number].red;
        const int apartGreen = green - m_palette[number].green;
        const int apartBlue = blue - m_palette[number].blue;
        const int apart = apartRed * apartRed + apartGreen * apartGreen + apartBlue * apartBlue;
        if (apart < least) {
            least = apart;
            found = number;
        }
    }
    return static_cast<std::uint8_t>(found);
}

} // namespace vandrel

#pragma once

#include <cstdint>
#include <vector>

namespace vandrel {

/// A colour of 24 bits.
struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour &) const = default;
    bool isGray() const { return red == green && green == blue; }
};

/// The colours that the pixels of a picture of at most 8 bits are numbers of.
using Palette = std::vector<Colour>;

/// `levels` grays from black to white at even steps; 2 to 256.
Palette grayPalette(int levels);
/// The sixteen colours of the early colour displays, in their usual order.
const Palette &sixteenColours();
/// Six levels each of red, green and blue (the number of a colour is 36 red + 6 green + blue), then 40 grays
/// between those that the cube already has.
const Palette &cubeAndGrays();

/// Whether all colours are grays.
bool isGray(const Palette &palette);
/// Whether each of 256 colours is the gray of its own number.
bool isGrayRamp(const Palette &palette);

/// The brightness of a colour: 0.299 red + 0.587 green + 0.114 blue, rounded half up, exactly.
inline int luma(int red, int green, int blue)
{
    // The weights in units of 2^-22. The three together are wrong by less than a tenth of the smallest step that
    // the sum can take (0.001); the addend that rounds is raised by as much, so that a half is never missed.
    return static_cast<int>((static_cast<std::uint32_t>(red) * 1254097U
                             + static_cast<std::uint32_t>(green) * 2462056U
                             + static_cast<std::uint32_t>(blue) * 478151U + (1U << 21) + 400U)
                            >> 22);
}

inline int luma(Colour colour)
{
    return luma(colour.red, colour.green, colour.blue);
}

} // namespace vandrel

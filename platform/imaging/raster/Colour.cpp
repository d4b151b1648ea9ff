#include "platform/imaging/raster/Colour.h"

#include <algorithm>

namespace vandrel {

namespace {

std::uint8_t evenStep(int index, int levels)
{
    return static_cast<std::uint8_t>((index * 255 * 2 + (levels - 1)) / ((levels - 1) * 2));
}

Palette makeCubeAndGrays()
{
    Palette palette;
    palette.reserve(256);
    for (int index = 0; index < 216; ++index)
        palette.push_back({evenStep(index / 36, 6), evenStep(index / 6 % 6, 6), evenStep(index % 6, 6)});
    // Eight grays in each of the five gaps between the cube's own grays.
    for (int index = 0; index < 40; ++index) {
        const int value = index / 8 * 51 + (51 * (index % 8 + 1) + 4) / 9;
        const auto gray = static_cast<std::uint8_t>(value);
        palette.push_back({gray, gray, gray});
    }
    return palette;
}

} // namespace

Palette grayPalette(int levels)
{
    Palette palette;
    palette.reserve(static_cast<std::size_t>(levels));
    for (int index = 0; index < levels; ++index) {
        const std::uint8_t gray = evenStep(index, levels);
        palette.push_back({gray, gray, gray});
    }
    return palette;
}

const Palette &sixteenColours()
{
    static const Palette colours{
        {0, 0, 0},     {128, 0, 0},     {0, 128, 0},     {128, 128, 0},   {0, 0, 128}, {128, 0, 128},
        {0, 128, 128}, {192, 192, 192}, {128, 128, 128}, {255, 0, 0},     {0, 255, 0}, {255, 255, 0},
        {0, 0, 255},   {255, 0, 255},   {0, 255, 255},   {255, 255, 255},
    };
    return colours;
}

const Palette &cubeAndGrays()
{
    static const Palette palette = makeCubeAndGrays();
    return palette;
}

bool isGray(const Palette &palette)
{
    return std::all_of(palette.begin(), palette.end(), [](Colour colour) { return colour.isGray(); });
}

bool isGrayRamp(const Palette &palette)
{
    if (palette.size() != 256)
        return false;
    for (std::size_t index = 0; index < palette.size(); ++index) {
        const auto gray = static_cast<std::uint8_t>(index);
        if (palette[index] != Colour{gray, gray, gray})
            return false;
    }
    return true;
}

} // namespace vandrel

#include "platform/imaging/operations/Colours.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/imaging/operations/PixelMap.h"
#include "platform/imaging/operations/PixelPlanes.h"
#include "platform/imaging/operations/Rounding.h"

namespace vandrel {

namespace {

/// The lower and the upper end of each of blue, green and red, as pixels have them.
struct ColourRange {
    std::array<std::uint8_t, 3> low;
    std::array<std::uint8_t, 3> high;

    bool holds(const std::uint8_t *pixel) const
    {
        return pixel[0] >= low[0] && pixel[0] <= high[0] && pixel[1] >= low[1] && pixel[1] <= high[1]
            && pixel[2] >= low[2] && pixel[2] <= high[2];
    }
};

ColourRange rangeOf(Colour first, Colour last)
{
    return {
        {std::min(first.blue, last.blue), std::min(first.green, last.green), std::min(first.red, last.red)},
        {std::max(first.blue, last.blue), std::max(first.green, last.green), std::max(first.red, last.red)}};
}

/// What is added to each octet of some pixels in a row: as many as fit whole pixels of 3 and of 4 octets.
using OctetShifts = std::array<std::int16_t, 768>;

OctetShifts octetShifts(int octets, const std::array<std::int16_t, 3> &ofColours)
{
    OctetShifts shifts{};
    for (std::size_t octet = 0; octet < shifts.size(); ++octet) {
        const std::size_t colour = octet % static_cast<std::size_t>(octets);
        shifts[octet] = colour < ofColours.size() ? ofColours[colour] : std::int16_t{0};
    }
    return shifts;
}

/// Halves rounded up, as levels are.
std::int16_t wholeShift(double shift)
{
    return static_cast<std::int16_t>(std::floor(std::clamp(shift, -255.0, 255.0) + 0.5));
}

/// How far hue, saturation and luminosity are moved: the hue in twelfths of a circle, the others as factor and addend.
struct HslShift {
    float hue = 0;
    float saturationFactor = 1;
    float saturationAddend = 0;
    float luminosityFactor = 1;
    float luminosityAddend = 0;
};

/// x of the way to 1, or -x of the way to 0, as factor and addend.
void setShare(double percent, float &factor, float &addend)
{
    const double share = std::clamp(percent, -100.0, 100.0) / 100;
    factor = static_cast<float>(1 - std::abs(share));
    addend = static_cast<float>(std::max(share, 0.0));
}

HslShift shiftOf(double hue, double saturation, double luminosity)
{
    HslShift shift;
    const double degrees = std::fmod(hue, 360.0);
    shift.hue = static_cast<float>((degrees < 0 ? degrees + 360 : degrees) / 30);
    setShare(saturation, shift.saturationFactor, shift.saturationAddend);
    setShare(luminosity, shift.luminosityFactor, shift.luminosityAddend);
    return shift;
}

using LightPlane = std::array<float, PixelPlanes::size>;

void toLight(const std::array<std::uint8_t, PixelPlanes::size> &levels, LightPlane &light)
{
    for (std::size_t pixel = 0; pixel < levels.size(); ++pixel)
        light[pixel] = static_cast<float>(levels[pixel]) * (1.0F / 255);
}

void toLevels(const LightPlane &light, std::array<std::uint8_t, PixelPlanes::size> &levels)
{
    for (std::size_t pixel = 0; pixel < levels.size(); ++pixel)
        levels[pixel] = toLevel(light[pixel] * 255);
}

/// One colour of a pixel from its luminosity, its amplitude, and the hue's distance in twelfths of a circle from
/// where that colour is least.
inline float colourAt(float luminosity, float amplitude, float twelfths)
{
    const float turned = twelfths >= 12 ? twelfths - 12 : twelfths;
    const float slope = std::min(std::min(turned - 3, 9 - turned), 1.0F);
    return luminosity - amplitude * std::max(slope, -1.0F);
}

void shiftPixel(const HslShift &shift, float &red, float &green, float &blue)
{
    // So small that it counts only where the divisor would be zero.
    constexpr float least = 1e-6F;
    const float highest = std::max(std::max(red, green), blue);
    const float lowest = std::min(std::min(red, green), blue);
    const float range = highest - lowest;
    const float sum = highest + lowest;
    const float perRange = 2.0F / std::max(range, least);
    const float fromBlue = (red - green) * perRange + 8;
    const float fromGreen = (blue - red) * perRange + 4;
    const float fromRed = (green - blue) * perRange + 12;
    float hue = highest == red ? fromRed : (highest == green ? fromGreen : fromBlue);
    hue = hue >= 12 ? hue - 12 : hue;
    hue += shift.hue;
    hue = hue >= 12 ? hue - 12 : hue;
    const float saturation = range / std::max(1 - std::abs(sum - 1), least);
    const float moved = saturation * shift.saturationFactor + shift.saturationAddend;
    const float luminosity = sum * 0.5F * shift.luminosityFactor + shift.luminosityAddend;
    const float amplitude = (range > least ? moved : 0.0F) * std::min(luminosity, 1 - luminosity);
    red = colourAt(luminosity, amplitude, hue);
    green = colourAt(luminosity, amplitude, hue + 8);
    blue = colourAt(luminosity, amplitude, hue + 4);
}

void shiftRow(const HslShift &shift, const std::uint8_t *from, std::uint8_t *to, int pixels, int octets)
{
    PixelPlanes planes;
    LightPlane red{};
    LightPlane green{};
    LightPlane blue{};
    for (int x = 0; x < pixels; x += PixelPlanes::size) {
        const int count = std::min(pixels - x, PixelPlanes::size);
        takeApart(from + static_cast<std::ptrdiff_t>(x) * octets, count, octets, planes);
        toLight(planes.red, red);
        toLight(planes.green, green);
        toLight(planes.blue, blue);
        // The whole block even at a row's end: the values behind it are old ones, and a fixed count is faster.
        for (std::size_t pixel = 0; pixel < red.size(); ++pixel)
            shiftPixel(shift, red[pixel], green[pixel], blue[pixel]);
        toLevels(red, planes.red);
        toLevels(green, planes.green);
        toLevels(blue, planes.blue);
        putTogether(planes, count, octets, to + static_cast<std::ptrdiff_t>(x) * octets);
    }
}

bool areFinite(double first, double second, double third)
{
    return std::isfinite(first) && std::isfinite(second) && std::isfinite(third);
}

} // namespace

Outcome replaceColours(const Subject &subject, Colour first, Colour last, Colour replacement)
{
    const ColourRange range = rangeOf(first, last);
    return mapPixels(subject, GrayResult::TakesColour,
                     [&](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         for (int x = 0; x < pixels; ++x, from += octets, to += octets) {
                             const bool inside = range.holds(from);
                             to[0] = inside ? replacement.blue : from[0];
                             to[1] = inside ? replacement.green : from[1];
                             to[2] = inside ? replacement.red : from[2];
                         }
                     });
}

Outcome adjustRgb(const Subject &subject, double red, double green, double blue)
{
    if (workingArea(subject).isEmpty() || !areFinite(red, green, blue))
        return refused(subject);
    if (red == 0 && green == 0 && blue == 0)
        return unchanged(subject);
    const std::array shifts{wholeShift(blue), wholeShift(green), wholeShift(red)};
    const OctetShifts withoutAlpha = octetShifts(3, shifts);
    const OctetShifts withAlpha = octetShifts(4, shifts);
    return mapPixels(subject, GrayResult::TakesColour,
                     [&](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         const OctetShifts &ofOctets = octets == 4 ? withAlpha : withoutAlpha;
                         const int all = pixels * octets;
                         const auto together = static_cast<int>(ofOctets.size());
                         for (int octet = 0; octet < all; octet += together)
                             shiftLevels(from + octet, ofOctets.data(), std::min(together, all - octet),
                                         to + octet);
                     });
}

Outcome adjustHsl(const Subject &subject, double hue, double saturation, double luminosity)
{
    if (workingArea(subject).isEmpty() || !areFinite(hue, saturation, luminosity))
        return refused(subject);
    if (std::fmod(hue, 360.0) == 0 && saturation == 0 && luminosity == 0)
        return unchanged(subject);
    const HslShift shift = shiftOf(hue, saturation, luminosity);
    return mapPixels(subject, GrayResult::TakesColour,
                     [&shift](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         shiftRow(shift, from, to, pixels, octets);
                     });
}

} // namespace vandrel

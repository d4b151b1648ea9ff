#pragma once

#include <cmath>

#include <QRect>

namespace vandrel {

/// One inch is 1440 twips and 96 device-independent pixels, so one pixel is 15 twips.
inline constexpr int twipsPerPixel = 15;

/// Twips to device-independent pixels, rounded to the nearest.
inline int pixels(double twips)
{
    return static_cast<int>(std::lround(twips / twipsPerPixel));
}

/// Device-independent pixels to twips.
inline int twips(int pixels)
{
    return pixels * twipsPerPixel;
}

/// A rectangle given in twips, in pixels: edges are rounded, so that neighbours that touch in twips touch in
/// pixels.
inline QRect pixelRect(int left, int top, int width, int height)
{
    const int x = pixels(left);
    const int y = pixels(top);
    return {x, y, pixels(left + width) - x, pixels(top + height) - y};
}

} // namespace vandrel

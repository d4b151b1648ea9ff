#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vandrel {

/// A level from 0 to 255: what is beyond is cut off.
inline std::uint8_t toLevel(int value)
{
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

/// The same, halves rounded up.
inline std::uint8_t toLevel(double value)
{
    return static_cast<std::uint8_t>(std::floor(std::clamp(value, 0.0, 255.0) + 0.5));
}

inline std::uint8_t toLevel(float value)
{
    // Never negative, so that cutting off rounds; a function for it would keep loops out of the vector unit.
    const float half = std::min(std::max(value, 0.0F), 255.0F) + 0.5F;
    return static_cast<std::uint8_t>(static_cast<int>(half));
}

/// Where a column or row beyond the picture's edge is mirrored to, with the edge itself as the mirror.
inline int mirrored(int position, int length)
{
    if (length == 1)
        return 0;
    while (position < 0 || position >= length)
        position = position < 0 ? -position : 2 * (length - 1) - position;
    return position;
}

} // namespace vandrel

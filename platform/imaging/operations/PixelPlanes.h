#pragma once

#include <array>
#include <cstdint>

namespace vandrel {

/// Some pixels with their colours apart, so that the processor's vector unit can do many at once.
struct PixelPlanes {
    static constexpr int size = 256;

    std::array<std::uint8_t, size> blue{};
    std::array<std::uint8_t, size> green{};
    std::array<std::uint8_t, size> red{};
};

/// The brightness of as many pixels.
using LumaPlane = std::array<std::uint8_t, PixelPlanes::size>;

/// Takes `count` pixels of 3 or 4 octets apart, at most as many as fit; alpha is left out.
void takeApart(const std::uint8_t *from, int count, int octets, PixelPlanes &planes);
/// The way back; a fourth octet is written, but means nothing.
void putTogether(const PixelPlanes &planes, int count, int octets, std::uint8_t *to);

/// Moves each of `count` levels by its own shift, to another place; what is beyond 0 or 255 is cut off.
void shiftLevels(const std::uint8_t *__restrict from,
                 const std::int16_t *__restrict shifts,
                 int count,
                 std::uint8_t *__restrict to);

/// The brightness of all the pixels, as luma() has it.
void lumaOf(const PixelPlanes &planes, LumaPlane &brightness);
/// The brightness of a row of pixels of 3 or 4 octets.
void lumaRow(const std::uint8_t *from, int pixels, int octets, std::uint8_t *to);

} // namespace vandrel

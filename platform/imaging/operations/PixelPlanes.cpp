#include "platform/imaging/operations/PixelPlanes.h"

#include <algorithm>
#include <cstddef>

#include <opencv2/core/hal/intrin.hpp>

namespace vandrel {

namespace {

/// Pixels in one of the processor's registers.
constexpr int together = cv::v_uint8x16::nlanes;

void takeApartTogether(const std::uint8_t *from, int octets, PixelPlanes &planes, std::size_t at)
{
    cv::v_uint8x16 blue;
    cv::v_uint8x16 green;
    cv::v_uint8x16 red;
    cv::v_uint8x16 alpha;
    if (octets == 3)
        cv::v_load_deinterleave(from, blue, green, red);
    else
        cv::v_load_deinterleave(from, blue, green, red, alpha);
    cv::v_store(planes.blue.data() + at, blue);
    cv::v_store(planes.green.data() + at, green);
    cv::v_store(planes.red.data() + at, red);
}

void putTogetherTogether(const PixelPlanes &planes, std::size_t at, int octets, std::uint8_t *to)
{
    const cv::v_uint8x16 blue = cv::v_load(planes.blue.data() + at);
    const cv::v_uint8x16 green = cv::v_load(planes.green.data() + at);
    const cv::v_uint8x16 red = cv::v_load(planes.red.data() + at);
    if (octets == 3)
        cv::v_store_interleave(to, blue, green, red);
    else
        cv::v_store_interleave(to, blue, green, red, cv::v_setzero_u8());
}

} // namespace

void takeApart(const std::uint8_t *from, int count, int octets, PixelPlanes &planes)
{
    int pixel = 0;
    for (; pixel + together <= count; pixel += together, from += together * octets)
        takeApartTogether(from, octets, planes, static_cast<std::size_t>(pixel));
    for (; pixel < count; ++pixel, from += octets) {
        const auto at = static_cast<std::size_t>(pixel);
        planes.blue[at] = from[0];
        planes.green[at] = from[1];
        planes.red[at] = from[2];
    }
}

void putTogether(const PixelPlanes &planes, int count, int octets, std::uint8_t *to)
{
    int pixel = 0;
    for (; pixel + together <= count; pixel += together, to += together * octets)
        putTogetherTogether(planes, static_cast<std::size_t>(pixel), octets, to);
    for (; pixel < count; ++pixel, to += octets) {
        const auto at = static_cast<std::size_t>(pixel);
        to[0] = planes.blue[at];
        to[1] = planes.green[at];
        to[2] = planes.red[at];
    }
}

void shiftLevels(const std::uint8_t *__restrict from,
                 const std::int16_t *__restrict shifts,
                 int count,
                 std::uint8_t *__restrict to)
{
    for (int index = 0; index < count; ++index) {
        const auto moved = static_cast<std::int16_t>(from[index] + shifts[index]);
        to[index] = static_cast<std::uint8_t>(std::clamp<std::int16_t>(moved, 0, 255));
    }
}

void lumaOf(const PixelPlanes &planes, LumaPlane &brightness)
{
    for (std::size_t pixel = 0; pixel < brightness.size(); ++pixel) {
        const int thousandths
            = 299 * planes.red[pixel] + 587 * planes.green[pixel] + 114 * planes.blue[pixel];
        // Half a level more rounds. Half a thousandth more keeps whole levels clear of the rounding error, which is
        // far smaller, and is too little to reach the next.
        const float level = (static_cast<float>(thousandths) + 500.5F) * 0.001F;
        brightness[pixel] = static_cast<std::uint8_t>(static_cast<int>(level));
    }
}

void lumaRow(const std::uint8_t *from, int pixels, int octets, std::uint8_t *to)
{
    PixelPlanes planes;
    LumaPlane brightness{};
    for (int x = 0; x < pixels; x += PixelPlanes::size) {
        const int count = std::min(pixels - x, PixelPlanes::size);
        takeApart(from + static_cast<std::ptrdiff_t>(x) * octets, count, octets, planes);
        lumaOf(planes, brightness);
        std::copy_n(brightness.begin(), count, to + x);
    }
}

} // namespace vandrel

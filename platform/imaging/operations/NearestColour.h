#pragma once

#include <array>
#include <vector>

#include <opencv2/core/hal/intrin.hpp>

#include "platform/imaging/raster/Colour.h"

namespace vandrel {

/// Finds the nearest of up to 256 colours, by the sum of the squared differences; the first of equally near ones.
/// Remembers, five bits a colour, which of them can be the nearest anywhere in a cell of that size, and compares those
/// alone. One thread at a time.
class NearestColour
{
public:
    explicit NearestColour(Palette palette);

    /// The number of the colour nearest to these levels.
    std::uint8_t find(int red, int green, int blue)
    {
        const std::size_t cell = static_cast<std::size_t>(red >> cellBits) << 2 * placeBits
            | static_cast<std::size_t>(green >> cellBits) << placeBits
            | static_cast<std::size_t>(blue >> cellBits);
        std::uint32_t groups = m_cells[cell];
        if (groups == unknown) {
            groups = candidatesOf(red, green, blue);
            m_cells[cell] = groups;
        }
        return nearestOf(&m_groups[groups >> countBits], groups & mostGroups, red, green, blue);
    }

    const Palette &palette() const { return m_palette; }

private:
    /// Eight colours that can be the nearest, with their numbers: red, green, blue and the number from the lowest eight
    /// bits up. So small that what is looked up stays near the processor, and so many that few cells need more: whether
    /// one does is hard to foresee. Where there are fewer, the last is repeated.
    using Candidates = std::array<std::uint32_t, 8>;
    static constexpr std::size_t atOnce = 4;

    static constexpr int placeBits = 5;
    static constexpr int cellBits = 8 - placeBits;
    /// How many groups follow the first one is told in so many bits, and where that is in those above.
    static constexpr int countBits = 6;
    static constexpr std::uint32_t mostGroups = (1U << countBits) - 1;
    static constexpr std::uint32_t unknown = ~0U;

    static std::uint8_t nearestOf(const Candidates *group, std::uint32_t more, int red, int green, int blue)
    {
        const cv::v_int16x8 redAndBlue = cv::v_reinterpret_as_s16(cv::v_setall_s32(red | blue << 16));
        const cv::v_int16x8 greenAlone = cv::v_reinterpret_as_s16(cv::v_setall_s32(green));
        const auto bestOf = [&](const Candidates &candidates) {
            return cv::v_min(keysOf(candidates.data(), redAndBlue, greenAlone),
                             keysOf(candidates.data() + atOnce, redAndBlue, greenAlone));
        };
        cv::v_float32x4 best = bestOf(*group);
        for (; more > 0; --more)
            best = cv::v_min(best, bestOf(*++group));
        best = cv::v_min(best, cv::v_reverse(best));
        best = cv::v_min(best, cv::v_rotate_right<1>(best));
        return static_cast<std::uint8_t>(cv::v_reinterpret_as_u32(best).get0() & 255);
    }

    /// The distances and, below them, the numbers: of equally near ones the first is the least. As the bits of floating
    /// point numbers of the same order, whose lesser one every processor finds in one step.
    static cv::v_float32x4
    keysOf(const std::uint32_t *four, const cv::v_int16x8 &redAndBlue, const cv::v_int16x8 &greenAlone)
    {
        const cv::v_uint32x4 packed = cv::v_load(four);
        const cv::v_int16x8 inRedAndBlue
            = cv::v_reinterpret_as_s16(packed & cv::v_setall_u32(0x00FF00FFU)) - redAndBlue;
        const cv::v_int16x8 inGreen
            = cv::v_reinterpret_as_s16((packed >> 8) & cv::v_setall_u32(0xFFU)) - greenAlone;
        const cv::v_int32x4 apart
            = cv::v_dotprod(inRedAndBlue, inRedAndBlue) + cv::v_dotprod(inGreen, inGreen);
        constexpr int exponent = 0x40000000;
        return cv::v_reinterpret_as_f32((apart << 8) | cv::v_reinterpret_as_s32(packed >> 24)
                                        | cv::v_setall_s32(exponent));
    }

    /// Makes the groups of the cell that holds these levels; gives their place and number.
    std::uint32_t candidatesOf(int red, int green, int blue);

    Palette m_palette;
    std::vector<std::uint32_t> m_cells;
    std::vector<Candidates> m_groups;
};

} // namespace vandrel

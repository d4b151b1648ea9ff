#include "platform/imaging/codecs/JpegQuality.h"

#include <algorithm>
#include <array>

#include "platform/imaging/codecs/JpegLibrary.h"

namespace vandrel {

namespace {

/// The standard's example tables for brightness and colour, in the order of rows, from which the library makes those
/// of each quality.
constexpr std::array<std::array<int, 64>, 2> exampleTables{{
    {16, 11,  10,  16, 24, 40, 51, 61, 12,  12,  14,  19,  26, 58, 60, 55,  14,  13,  16,  24, 40, 57,
     69, 56,  14,  17, 22, 29, 51, 87, 80,  62,  18,  22,  37, 56, 68, 109, 103, 77,  24,  35, 55, 64,
     81, 104, 113, 92, 49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98,  112, 100, 103, 99},
    {17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
     99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
     99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99},
}};

int stepAt(int example, int quality)
{
    const int scale = quality < 50 ? 5000 / quality : 200 - quality * 2;
    return std::clamp((example * scale + 50) / 100, 1, 255);
}

bool isNowhereCoarser(int quality, const JQUANT_TBL *table, const std::array<int, 64> &example)
{
    if (table == nullptr)
        return true;
    for (std::size_t index = 0; index < 64; ++index) {
        if (stepAt(example[index], quality) > table->quantval[index])
            return false;
    }
    return true;
}

} // namespace

JpegOrigin originOf(const jpeg_decompress_struct &info)
{
    JpegOrigin origin;
    origin.quality = 100;
    while (origin.quality > 1
           && isNowhereCoarser(origin.quality - 1, info.quant_tbl_ptrs[0], exampleTables[0])
           && isNowhereCoarser(origin.quality - 1, info.quant_tbl_ptrs[1], exampleTables[1]))
        --origin.quality;
    if (info.num_components >= 3) {
        const jpeg_component_info &brightness = info.comp_info[0];
        const jpeg_component_info &colour = info.comp_info[1];
        origin.sharedAcross = brightness.h_samp_factor >= 2 * colour.h_samp_factor ? 2 : 1;
        origin.sharedDown = brightness.v_samp_factor >= 2 * colour.v_samp_factor ? 2 : 1;
    }
    return origin;
}

} // namespace vandrel

#pragma once

#include <cstdint>

namespace vandrel {

/// How large a picture may be. Checked before any memory is asked for, for what files claim as well as for what
/// operations would make.
namespace picturelimits {

/// Pixels in a row or a column.
inline constexpr int longestSide = 65535;
/// Pixels in all.
inline constexpr std::int64_t mostPixels = 300'000'000;
/// Octets of pixels in memory.
inline constexpr std::int64_t mostOctets = 1'200'000'000;

} // namespace picturelimits

/// Whether a picture of that many columns and rows, at `channels` octets (1, 3 or 4) a pixel, is within the limits.
bool isWithinLimits(std::int64_t width, std::int64_t height, int channels);

} // namespace vandrel

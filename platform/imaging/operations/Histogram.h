#pragma once

#include <array>
#include <cstdint>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// How many pixels there are of each value.
using Histogram = std::array<std::int64_t, 256>;

/// The palette numbers of an indexed picture's pixels.
Histogram numberHistogram(const Raster &picture);

/// The brightness of the pixels in an area inside the picture.
Histogram lumaHistogram(const Raster &picture, const PixelArea &area);

} // namespace vandrel

#pragma once

#include <array>
#include <cstdint>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// How many pixels there are of each brightness.
using Histogram = std::array<std::int64_t, 256>;

/// The brightness of the pixels in an area inside the picture.
Histogram lumaHistogram(const Raster &picture, const PixelArea &area);

} // namespace vandrel

#pragma once

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The picture turned clockwise by quarters of a circle, 0 to 3; every pixel stays as it is. Raises std::bad_alloc.
Raster turned(const Raster &picture, int quarters);
/// The picture with left and right swapped. Raises std::bad_alloc.
Raster mirroredSideways(const Raster &picture);

/// Swaps the order of a row's pixels, from one place to another that does not overlap it.
void copyReversed(const std::uint8_t *from, int pixels, int octets, std::uint8_t *to);

} // namespace vandrel

#pragma once

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The same picture with 24 bits a pixel; one that has blue, green and red already is only shared. Alpha is dropped.
/// Raises std::bad_alloc.
Raster asTrueColour(const Raster &picture);

/// An indexed picture whose palette holds grays only, with the gray ramp as palette and 8 bits a pixel, so that the
/// pixels' numbers are their brightness. Raises std::bad_alloc.
Raster asGrayRamp(const Raster &picture);

/// A copy of the pixels that can be written. Raises std::bad_alloc.
std::shared_ptr<PixelBuffer> copyOfPixels(const Raster &picture);

/// Writes the colours of a row of palette numbers as blue, green, red.
void expandRow(const std::uint8_t *numbers, int count, const Palette &palette, std::uint8_t *bgr);

} // namespace vandrel

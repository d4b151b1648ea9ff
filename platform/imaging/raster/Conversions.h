#pragma once

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The same picture with 24 bits a pixel; one that has blue, green and red already is only shared. Alpha is dropped.
/// Raises std::bad_alloc.
Raster asTrueColour(const Raster &picture);

/// Writes the colours of a row of palette numbers as blue, green, red.
void expandRow(const std::uint8_t *numbers, int count, const Palette &palette, std::uint8_t *bgr);

} // namespace vandrel

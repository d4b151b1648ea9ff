#pragma once

#include "platform/imaging/raster/Raster.h"

struct jpeg_decompress_struct;

namespace vandrel {

/// How the file was written whose header was read: the lowest of the library's qualities whose tables are nowhere
/// coarser than the file's, and how many pixels share a colour.
JpegOrigin originOf(const jpeg_decompress_struct &info);

} // namespace vandrel

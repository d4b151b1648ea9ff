#pragma once

#include "platform/imaging/codecs/Decoding.h"

class QIODevice;

namespace vandrel {

/// Writes a TIFF file with one page: black and white as fax group 4, everything else LZW with differences; grays,
/// palettes and alpha at their depth, 16 bits as 24. The device must be able to go to any position. Raises
/// PictureFailure.
void writeTiff(const Raster &picture, QIODevice &device, const FileProgress &progress = {});

} // namespace vandrel

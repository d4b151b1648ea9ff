#pragma once

#include "platform/imaging/codecs/Decoding.h"

class QIODevice;

namespace vandrel {

/// Writes a WPG file with one bitmap: version 1 for black and white, 4 and 8 bits, version 2 for everything else, where
/// more than 8 bits become 24. Raises PictureFailure for a side of more than 32767 pixels.
void writeWpg(const Raster &picture, QIODevice &device, const FileProgress &progress = {});

} // namespace vandrel

#pragma once

#include "platform/imaging/codecs/Decoding.h"

class QIODevice;

namespace vandrel {

/// Writes a bitmap at the picture's depth, without compression: with the file header (BMP) or without (DIB). 32 bits
/// are written with their alpha where any pixel has one.
void writeBmp(const Raster &picture,
              bool withFileHeader,
              QIODevice &device,
              const FileProgress &progress = {});

} // namespace vandrel

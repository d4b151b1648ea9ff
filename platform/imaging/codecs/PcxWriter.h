#pragma once

#include "platform/imaging/codecs/Decoding.h"

class QIODevice;

namespace vandrel {

/// Writes a PCX file of version 5: black and white as one plane of 1 bit, up to 16 colours as four planes, 8 bits with a palette of 256, and all
/// others as three planes of eight bits.
void writePcx(const Raster &picture, QIODevice &device, const FileProgress &progress = {});

} // namespace vandrel

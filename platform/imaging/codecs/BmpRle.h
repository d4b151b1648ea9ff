#pragma once

#include "platform/imaging/codecs/Decoding.h"
#include "platform/imaging/codecs/OctetReader.h"

namespace vandrel {

/// Reads run-length encoded pixels of 4 or 8 bits into rows in the order of the file; pixels that it leaves out stay
/// as they are. False where the data reach beyond the picture, or end before they say that they do.
bool readBmpRle(OctetReader &file, bool fourBits, const PixelView &pixels, const DecodeRequest &request);

/// Turns the order of the rows around, in place.
void reverseRows(const PixelView &pixels);

} // namespace vandrel

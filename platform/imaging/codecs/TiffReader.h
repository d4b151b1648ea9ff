#pragma once

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Decodes the first page of a TIFF file: black and white, gray and palette at their depth of 1, 4 or 8 bits, those with
/// alpha as 32, all others as 24. Stands upright, in the screen's usual colours. Raises PictureFailure.
DecodedPicture readTiff(QIODevice &device, const DecodeRequest &request);

} // namespace vandrel

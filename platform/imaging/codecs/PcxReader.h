#pragma once

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Decodes a PCX file of versions 0 to 5: one plane of 1 to 8 bits, two to four planes of one bit, and three or four
/// planes of eight. Raises PictureFailure.
DecodedPicture readPcx(QIODevice &device, const DecodeRequest &request);

} // namespace vandrel

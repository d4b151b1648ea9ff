#pragma once

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Decodes a JPEG file, baseline or progressive: gray as 8 bits, everything else as 24. Stands upright whatever way
/// the camera was held; colours are the screen's usual ones. For a box the picture may be reduced to a half, a quarter
/// or an eighth, then without regard to its colour profile. Raises PictureFailure.
DecodedPicture readJpeg(QIODevice &device, const DecodeRequest &request);

} // namespace vandrel

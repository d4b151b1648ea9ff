#pragma once

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Decodes a bitmap file (BMP), or one without the file header in front (DIB). Raises PictureFailure.
DecodedPicture readBmp(QIODevice &device, const DecodeRequest &request);

} // namespace vandrel

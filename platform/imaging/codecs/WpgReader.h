#pragma once

#include <optional>

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Decodes the bitmap of a WPG file of version 1 or 2, the largest where there are several. Absent where the file draws
/// its picture with lines and shapes. Raises PictureFailure.
std::optional<DecodedPicture> readWpg(QIODevice &device, const DecodeRequest &request);

} // namespace vandrel

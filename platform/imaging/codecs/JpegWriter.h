#pragma once

#include "platform/imaging/codecs/Decoding.h"

class QIODevice;

namespace vandrel {

/// Writes a JPEG file; pictures with gray palettes as gray, all others as colour without alpha.
///
/// A picture that was read from a JPEG file and not changed since is written as that was: at its quality and with as
/// many pixels to a colour. So its values meet the same steps again, and repeated saving neither loses more nor lets
/// the file grow. Every other picture is written at quality 90 with a colour for each pixel: at 100 percent size the
/// loss is then hard to see, and a file of twice the size would hardly look better.
///
/// Raises PictureFailure.
void writeJpeg(const Raster &picture, QIODevice &device, const FileProgress &progress = {});

} // namespace vandrel

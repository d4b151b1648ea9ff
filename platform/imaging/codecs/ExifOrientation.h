#pragma once

#include <QByteArrayView>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// How a camera was held: 1 to 8, as the Exif orientation tag has it; 1 where the octets of an Exif block (what follows
/// "Exif\0\0") say nothing or are damaged.
int exifOrientation(QByteArrayView exif);

/// The picture turned and mirrored so that it stands upright, for an orientation of 1 to 8; others change nothing.
Raster upright(const Raster &picture, int orientation);

/// Whether that orientation swaps width and height.
inline bool swapsSides(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

} // namespace vandrel

#pragma once

#include <QImage>
#include <QRect>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// A part of a picture, wholly inside it, as the toolkit sees the same memory: valid as long as the picture.
QImage imageOver(const Raster &picture, const QRect &part);

/// A copy of the whole picture in the toolkit's most common form; null without memory.
QImage copiedImage(const Raster &picture);

} // namespace vandrel

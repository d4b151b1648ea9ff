#pragma once

#include <QSize>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The picture with that many pixels, no more than it has in either direction: each is the mean of those it stands for.
/// Of 24 bits, or 32 with alpha. Raises std::bad_alloc.
Raster reduced(const Raster &picture, QSize size);

} // namespace vandrel

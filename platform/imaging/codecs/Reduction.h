#pragma once

#include <QSize>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The size of a picture that fits a box with its proportions kept; at least one pixel a side. Pictures that fit
/// already keep theirs.
QSize sizeWithin(QSize picture, QSize box);

/// The picture with that many pixels, no more than it has in either direction: each is the mean of those it stands for.
/// Of 24 bits, or 32 with alpha. Raises std::bad_alloc.
Raster reduced(const Raster &picture, QSize size);

} // namespace vandrel

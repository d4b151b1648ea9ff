#pragma once

#include <functional>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// Does the rows from 0 to before `rows` in bands, each with `work`, on as many threads as it likes.
using RowSharing = std::function<void(int rows, const std::function<void(int first, int end)> &work)>;

/// Writes the target's rows from `first` to before `end`, the source turned clockwise by 1 to 3 quarters of a circle. The
/// target has the size that the source then has, and shares no memory with it.
void turnRows(const ConstPixelView &from, const PixelView &to, int quarters, int first, int end);

/// The picture turned clockwise by quarters of a circle, 0 to 3; every pixel stays as it is. Does the work on this
/// thread where nobody shares it out. Raises std::bad_alloc.
Raster turned(const Raster &picture, int quarters, const RowSharing &share = {});
/// The picture with left and right swapped. Raises std::bad_alloc.
Raster mirroredSideways(const Raster &picture);

/// Swaps the order of a row's pixels, from one place to another that does not overlap it.
void copyReversed(const std::uint8_t *from, int pixels, int octets, std::uint8_t *to);

} // namespace vandrel

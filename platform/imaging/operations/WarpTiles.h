#pragma once

#include <opencv2/core.hpp>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Fills an area of the target with the source's pixels as `toSource` maps the target's points to the source's, with
/// smooth transitions; what lies outside of the source becomes white. Both planes have their origin at the upper left
/// corner of the pixel 0, 0 of their views, and pixels are squares of side 1. In tiles, since the library refuses
/// sources with sides of 32767 pixels and more, and since a tile that sees nothing of the source is quickly white.
void warpTiles(const ConstPixelView &source,
               const PixelView &target,
               const PixelArea &area,
               const cv::Matx33d &toSource,
               const OperationProgress &progress);

} // namespace vandrel

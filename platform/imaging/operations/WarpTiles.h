#pragma once

#include <opencv2/core.hpp>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Fills an area of the target with the pixels of a part of the picture as `toSource` maps the target's points to those of
/// the part, with smooth transitions; what lies outside of the part becomes white. The target has as many octets a pixel as
/// channelsOfValues() says. Both planes have their origin at the upper left corner of the first pixel of target and part,
/// and pixels are squares of side 1. In tiles, since the library refuses sources with sides of 32767 pixels and more, and
/// since a tile that sees nothing of the source is quickly white.
void warpTiles(const Raster &picture,
               const PixelArea &part,
               const PixelView &target,
               const PixelArea &area,
               const cv::Matx33d &toSource,
               const OperationProgress &progress);

} // namespace vandrel

#pragma once

#include <array>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// A point of the picture's plane, in pixels from its upper left corner.
struct PlanePoint {
    int x = 0;
    int y = 0;
};

/// Draws the area's pixels, in perspective, into the four-sided figure whose corners its upper left, upper right,
/// lower left and lower right corners go to; what the area then leaves uncovered becomes white, and what leaves the
/// area is cut off. Refused for figures that are flat, crossed or dented, and for corners further than 32000 from the
/// picture's.
Outcome warp(const Subject &subject, const std::array<PlanePoint, 4> &corners);

} // namespace vandrel

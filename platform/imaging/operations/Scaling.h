#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Fills the target with the picture at the target's size: each pixel is the mean of what it covers in a direction in
/// which the picture shrinks, and lies between its two neighbours in one in which it grows. The target has 4 octets a
/// pixel where the picture has alpha, else 3. What is not a whole level is rounded once, halves up.
void scaleSmoothly(const Raster &picture, const PixelView &target, const OperationProgress &progress);

} // namespace vandrel

#pragma once

#include <array>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Nine weights, row by row.
using Kernel = std::array<int, 9>;

/// The mean of five by five pixels, weighted 1 4 6 4 1 both ways.
Outcome blur(const Subject &subject);
/// Adds to each pixel its difference from the blurred picture, 0 to 100 percent of twice that.
Outcome sharpen(const Subject &subject, double percent);
/// Gray, plus the neighbour at the lower right, minus the one at the upper left.
Outcome emboss(const Subject &subject);
/// The weighted sum of each pixel's neighbourhood, divided and rounded half up, plus `bias`. A divisor of 0 stands
/// for the sum of the weights, or for 1 where that is 0 too.
Outcome matrix(const Subject &subject, const Kernel &kernel, int divisor, int bias);
/// Replaces each square of `size` pixels, from the area's upper left corner on, by its mean; below 2 nothing changes.
Outcome mosaic(const Subject &subject, double size);

} // namespace vandrel

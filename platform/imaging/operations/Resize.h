#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// The whole picture at another size, in pixels, halves rounded up: means where it shrinks, smooth transitions where it
/// grows, and the nearest pixel where pixels are numbers in a palette. Refused for less than one pixel and over the
/// limits.
Outcome resize(const Subject &subject, double width, double height);

/// The whole size that resize() would make of these; absent where it would refuse them for that depth.
std::optional<PixelArea> sizeAfterResize(double width, double height, int bitsPerPixel);

} // namespace vandrel

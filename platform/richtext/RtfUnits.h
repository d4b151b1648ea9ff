#pragma once

#include "runtime/Twips.h"

namespace vandrel {

constexpr int twipsPerPoint = 20;
constexpr double pointsPerPixel = static_cast<double>(twipsPerPixel) / twipsPerPoint;

/// The pixels that so many twips are, with their fraction (runtime/Twips.h has them rounded, as windows need them).
constexpr double exactPixels(int twips)
{
    return static_cast<double>(twips) / twipsPerPixel;
}

} // namespace vandrel

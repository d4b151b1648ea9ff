#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Gives every pixel whose red, green and blue each lie between those of the first two colours (in either order, both
/// included) the third colour.
Outcome replaceColours(const Subject &subject, Colour first, Colour last, Colour replacement);

/// Adds to each pixel's red, green and blue, -255 to 255.
Outcome adjustRgb(const Subject &subject, double red, double green, double blue);

/// Turns each pixel's hue by `hue` degrees, and moves its saturation and its luminosity by a share of the way to full
/// (1 to 100 percent) or to zero (-1 to -100). A gray has no hue and stays gray.
Outcome adjustHsl(const Subject &subject, double hue, double saturation, double luminosity);

} // namespace vandrel

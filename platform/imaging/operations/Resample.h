#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Where the colours of a picture with a palette come from.
enum class ColourChoice { Fixed, Gray, Optimized };

/// How the difference between a pixel and the nearest colour there is gets hidden. Diffusion passes it on to the
/// neighbours, back and forth from row to row, within strips of 512 rows; the ordered one compares with a regular
/// pattern, the random one with noise that is the same every time.
enum class Dither { None, FloydSteinberg, Ordered, Random };

/// Gives the whole picture another depth. With 1 bit: black and white by brightness. With 4: the sixteen fixed colours,
/// sixteen grays, or the sixteen colours that suit the picture best. With 8: a colour cube and grays, 256 grays, or the
/// 256 best. A picture that has no more colours than fit keeps them exactly when they are optimized. With 16: 32
/// levels a colour, dithered too. With 24: as it is. Other depths are refused.
Outcome resample(const Subject &subject, int bitsPerPixel, ColourChoice choice, Dither dither);

} // namespace vandrel

#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Turns the whole picture so that lines of text run straight across. Looks for the angle, up to 15 degrees either way
/// in steps of a tenth, at which dark and light rows differ most; leaves the picture as it is where that is less than
/// 0.2 degrees or where it stands out by less than a twentieth.
Outcome deskew(const Subject &subject);

/// The angle by which the picture's lines run down to the right, in degrees; 0 where none stands out.
double skewOf(const Raster &picture);

} // namespace vandrel

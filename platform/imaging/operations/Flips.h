#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Swaps left and right in the area; every pixel stays as it is.
Outcome flipHorizontally(const Subject &subject);
/// Swaps top and bottom in the area.
Outcome flipVertically(const Subject &subject);

} // namespace vandrel

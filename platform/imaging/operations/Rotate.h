#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Turns clockwise. The whole picture gets as large as it then needs to be; quarters of a circle lose nothing. With an
/// area, its pixels are turned around its middle and cut at its edges. What is uncovered becomes white. Refused too
/// where the result would be over the limits.
Outcome rotate(const Subject &subject, double degrees);

} // namespace vandrel

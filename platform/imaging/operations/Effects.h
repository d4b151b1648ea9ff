#pragma once

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// A warm light on a spot above the area's middle, in an area that darkens towards its corners.
Outcome rembrandt(const Subject &subject);
/// Rows that have slipped sideways, every other one dimmed; the same for the same area every time.
Outcome brokenTv(const Subject &subject);
/// Lets the brightness look like heights under a light from the upper left, or from the lower right when inverted.
/// `depth` from -100 to 100 says how steep; 0 changes nothing.
Outcome bumpMap(const Subject &subject, int depth, bool inverted);
/// A raised edge, `width` pixels wide and at most half of the area's shorter side: top and left lightened, bottom and
/// right darkened by `intensity` percent, 0 to 100.
Outcome buttonize(const Subject &subject, double intensity, double width);

} // namespace vandrel

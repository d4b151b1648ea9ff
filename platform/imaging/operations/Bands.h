#pragma once

#include <functional>

#include "platform/imaging/operations/Operation.h"
#include "platform/imaging/raster/PixelArea.h"

namespace vandrel {

/// Does the rows of an area on all processors: `work` gets the first row and the one behind the last of a band, on
/// any thread. Raises what `work` raises.
void inBands(const PixelArea &area,
             const OperationProgress &progress,
             const std::function<void(int first, int end)> &work);

} // namespace vandrel

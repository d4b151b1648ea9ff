#pragma once

#include "platform/imaging/raster/Raster.h"

namespace vandrel::bench {

/// A picture of that many million pixels, four by three, 24 bits: smooth colours with noise and edges, as photographs have
/// them.
Raster photograph(double millions);

} // namespace vandrel::bench

#pragma once

#include "platform/imaging/operations/Resample.h"

namespace vandrel {

/// How the pixels of a picture become numbers of a palette.
struct Quantisation {
    Palette palette;
    Dither dither = Dither::None;
    /// The distance between neighbouring levels of the palette, in levels: how far patterns and noise may reach.
    int step = 51;
    /// Whether brightness alone counts: for palettes of grays.
    bool byLuma = false;
};

/// The palette numbers of a picture of any depth. Raises std::bad_alloc.
std::shared_ptr<PixelBuffer>
quantised(const Raster &picture, const Quantisation &how, const OperationProgress &progress);

/// A picture of any depth with each colour on one of 32 levels. Raises std::bad_alloc.
std::shared_ptr<PixelBuffer>
quantisedToFiveBits(const Raster &picture, Dither dither, const OperationProgress &progress);

} // namespace vandrel

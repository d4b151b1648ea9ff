#pragma once

#include <functional>
#include <optional>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// Told on the calling thread, from time to time while an operation on a large picture runs, how much of it is done:
/// 0 to 100. May be empty.
using OperationProgress = std::function<void(int percent)>;

/// The progress of the rest of an operation of which `done` percent are done: nothing of it counts from there on.
OperationProgress remaining(const OperationProgress &whole, int done);

/// What an operation works on. Every operation takes any values: those outside of a parameter's range count as the
/// range's nearest end, and one that is no number refuses the operation.
struct Subject {
    Raster picture;
    /// The pixels that may change, cut to the picture; absent for the whole picture. Operations on a neighbourhood
    /// read beyond it.
    std::optional<PixelArea> area = {};
    OperationProgress progress = {};
};

/// What came of an operation.
struct Outcome {
    /// False when it was refused: no picture, an area outside of it, a value that is no number, a result over the
    /// limits, no memory. Then the picture is the one given.
    bool done = false;
    /// The result; shares its pixels with the picture given when the values asked for no change.
    Raster picture;
};

/// The depth of results: pictures of 16 bits stay on their 32 levels a colour, those of 32 keep each pixel's alpha
/// (operations that move pixels move it along, and what they uncover is white and opaque). An indexed picture keeps
/// its depth where only colours change and no area is set (the palette changes), and where pixels only change places;
/// one of 8 bits with a gray palette where the result is gray. Else its result has 24 bits.

Outcome refused(const Subject &subject);
Outcome unchanged(const Subject &subject);

/// The area to work on, cut to the picture: empty where the operation is to be refused.
PixelArea workingArea(const Subject &subject);
bool coversPicture(const PixelArea &area, const Raster &picture);

/// Runs an operation so that no failure of memory or of a library leaves it: those are refusals.
Outcome refusingOnFailure(const Subject &subject, const std::function<Outcome()> &operation);

} // namespace vandrel

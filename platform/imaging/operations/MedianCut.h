#pragma once

#include <optional>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The colours of a picture, in the order of their numbers from black on, if there are no more than `most`.
std::optional<Palette> fewColours(const Raster &picture, std::size_t most);

/// `count` colours that suit a picture: the boxes of its colours, counted five bits a colour, are cut in two at their
/// middle, widest and fullest first, and each gives its mean.
Palette medianCut(const Raster &picture, std::size_t count);

} // namespace vandrel

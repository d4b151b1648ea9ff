#pragma once

#include <array>
#include <functional>
#include <vector>

#include "platform/imaging/operations/Workspace.h"

namespace vandrel {

/// Three rows around one of an area, each one pixel longer on both sides than the area is wide, as the picture goes on
/// there; beyond the picture it is mirrored.
struct NeighbourRows {
    const std::uint8_t *above;
    const std::uint8_t *here;
    const std::uint8_t *below;
    /// Octets a pixel in these rows.
    int octets;
    /// All of the picture's rows, for this call alone.
    ValueRows &source;
};

/// Writes one row of the area, at `to`, from the rows around it. Called on any thread.
using NeighbourMap = std::function<void(const NeighbourRows &rows, int y, std::uint8_t *to)>;

/// Does an operation that needs each pixel's eight neighbours.
void mapNeighbours(Workspace &work, const NeighbourMap &map);
/// The same with the neighbours' brightness, one octet a pixel.
void mapLumaNeighbours(Workspace &work, const NeighbourMap &map);

} // namespace vandrel

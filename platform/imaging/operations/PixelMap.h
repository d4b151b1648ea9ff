#pragma once

#include <functional>

#include "platform/imaging/operations/Workspace.h"

namespace vandrel {

/// Writes a row's new values: `octets` of 1, 3 or 4 a pixel, the fourth being alpha, of which what is written does
/// not matter. Called on any thread.
using RowMap = std::function<void(const std::uint8_t *from, std::uint8_t *to, int pixels, int octets)>;

/// An operation that gives every pixel a colour that depends on its old one alone. Without an area, an indexed
/// picture's palette is changed instead of its pixels.
Outcome mapPixels(const Subject &subject, GrayResult result, const RowMap &map);

} // namespace vandrel

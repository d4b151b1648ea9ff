#pragma once

#include <array>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// What becomes of each level of red, green and blue alike.
using ToneTable = std::array<std::uint8_t, 256>;

/// Gives every level of the area the table's one.
Outcome applyTones(const Subject &subject, const ToneTable &table);

/// Spreads the brightness between the darkest and the brightest half percent of the area over all levels.
Outcome autoContrast(const Subject &subject);
/// Spreads the area's brightness so that every level is as frequent as any other; what tells the colours apart stays.
Outcome equalize(const Subject &subject);
Outcome negative(const Subject &subject);
/// Darkens the middle tones along 255 t^2 for t from 0 to 1; both ends stay.
Outcome concaveSpectrum(const Subject &subject);
/// Lightens them along 255 (1 - (1 - t)^2): the concave curve's mirror picture.
Outcome convexSpectrum(const Subject &subject);
/// Fades to white; 0 leaves all as it is, 100 leaves only white.
Outcome blend(const Subject &subject, double percent);
/// Adds the share of the full range, -100 to 100 percent.
Outcome brightness(const Subject &subject, double percent);
/// Scales the distance from the middle by the square of (100 + percent) / 100, from -100 (gray) to 100 (four times).
Outcome contrast(const Subject &subject, double percent);
/// Raises to the power 1 / gamma, 0.1 to 10; 1, 0 and what is below change nothing.
Outcome gamma(const Subject &subject, double gamma);

} // namespace vandrel

#pragma once

#include <algorithm>
#include <cmath>

#include <QSize>
#include <QSizeF>

namespace vandrel {

/// The pixels that a drawing of that size gets: its own size, but with 1000 to 8000 on the longer side, and at least one
/// on the shorter. Empty for an empty drawing.
inline QSize drawnSize(const QSizeF &natural)
{
    constexpr double shortestLongSide = 1000;
    constexpr double longestSide = 8000;
    if (natural.isEmpty())
        return {};
    const double longer = std::max(natural.width(), natural.height());
    const QSizeF drawn = natural * (std::clamp(longer, shortestLongSide, longestSide) / longer);
    return QSize(static_cast<int>(drawn.width()), static_cast<int>(drawn.height())).expandedTo(QSize(1, 1));
}

} // namespace vandrel

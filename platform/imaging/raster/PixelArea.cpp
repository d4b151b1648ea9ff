#include "platform/imaging/raster/PixelArea.h"

#include <algorithm>

namespace vandrel {

PixelArea clipped(const PixelArea &area, int width, int height)
{
    const std::int64_t right = static_cast<std::int64_t>(area.left) + area.width;
    const std::int64_t bottom = static_cast<std::int64_t>(area.top) + area.height;
    PixelArea inside;
    inside.left = std::clamp(area.left, 0, width);
    inside.top = std::clamp(area.top, 0, height);
    inside.width = static_cast<int>(std::clamp<std::int64_t>(right, inside.left, width)) - inside.left;
    inside.height = static_cast<int>(std::clamp<std::int64_t>(bottom, inside.top, height)) - inside.top;
    return inside.isEmpty() ? PixelArea{} : inside;
}

} // namespace vandrel

#pragma once

#include <cstdint>

namespace vandrel {

/// A rectangle of pixels: the columns left to left + width - 1, the rows top to top + height - 1.
struct PixelArea {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelArea &) const = default;
    bool isEmpty() const { return width <= 0 || height <= 0; }
    int right() const { return left + width; }
    int bottom() const { return top + height; }
    std::int64_t pixels() const { return static_cast<std::int64_t>(width) * height; }
};

/// The part of an area, given as any four numbers, that lies in a picture of that size; empty where there is none.
PixelArea clipped(const PixelArea &area, int width, int height);

} // namespace vandrel

#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

void dropAlpha(const std::uint8_t *from, int count, std::uint8_t *to)
{
    for (int x = 0; x < count; ++x, from += 4, to += 3) {
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }
}

} // namespace

void expandRow(const std::uint8_t *numbers, int count, const Palette &palette, std::uint8_t *bgr)
{
    for (int x = 0; x < count; ++x, bgr += 3) {
        const Colour colour = palette[numbers[x]];
        bgr[0] = colour.blue;
        bgr[1] = colour.green;
        bgr[2] = colour.red;
    }
}

Raster asTrueColour(const Raster &picture)
{
    const ConstPixelView from = picture.view();
    if (from.channels == 3)
        return picture.withDepth(24);
    auto pixels = PixelBuffer::make(from.width, from.height, 3);
    for (int y = 0; y < from.height; ++y) {
        if (picture.isIndexed())
            expandRow(from.row(y), from.width, picture.palette(), pixels->view().row(y));
        else
            dropAlpha(from.row(y), from.width, pixels->view().row(y));
    }
    return Raster(std::move(pixels), 24, {}, picture.resolution());
}

} // namespace vandrel

#include "platform/imaging/raster/Turning.h"

#include <algorithm>
#include <cstring>

namespace vandrel {

namespace {

template<int Octets>
void reverseRow(const std::uint8_t *from, int pixels, std::uint8_t *to)
{
    to += static_cast<std::ptrdiff_t>(pixels) * Octets;
    for (int x = 0; x < pixels; ++x, from += Octets) {
        to -= Octets;
        std::memcpy(to, from, Octets);
    }
}

/// How columns of the target follow from rows of the source.
struct Quarter {
    bool clockwise;
};

/// Target column x is the source's row x from the bottom (clockwise) or from the top; its rows run along it forwards
/// or backwards. In squares, so that neither side leaves the processor's cache.
template<int Octets>
void quarterTurn(const ConstPixelView &from, const PixelView &to, Quarter quarter)
{
    constexpr int square = 32;
    for (int top = 0; top < to.height; top += square) {
        for (int left = 0; left < to.width; left += square) {
            const int bottom = std::min(to.height, top + square);
            const int right = std::min(to.width, left + square);
            for (int y = top; y < bottom; ++y) {
                const int column = quarter.clockwise ? y : from.width - 1 - y;
                for (int x = left; x < right; ++x) {
                    const int row = quarter.clockwise ? from.height - 1 - x : x;
                    std::memcpy(to.at(x, y), from.at(column, row), Octets);
                }
            }
        }
    }
}

void quarterTurn(const ConstPixelView &from, const PixelView &to, Quarter quarter)
{
    if (from.channels == 1)
        quarterTurn<1>(from, to, quarter);
    else if (from.channels == 3)
        quarterTurn<3>(from, to, quarter);
    else
        quarterTurn<4>(from, to, quarter);
}

Raster upsideDown(const Raster &picture)
{
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(from.width, from.height, from.channels);
    for (int y = 0; y < from.height; ++y)
        copyReversed(from.row(from.height - 1 - y), from.width, from.channels, pixels->view().row(y));
    return picture.withPixels(std::move(pixels));
}

} // namespace

void copyReversed(const std::uint8_t *from, int pixels, int octets, std::uint8_t *to)
{
    if (octets == 1)
        reverseRow<1>(from, pixels, to);
    else if (octets == 3)
        reverseRow<3>(from, pixels, to);
    else
        reverseRow<4>(from, pixels, to);
}

Raster turned(const Raster &picture, int quarters)
{
    if (quarters == 0)
        return picture;
    if (quarters == 2)
        return upsideDown(picture);
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(from.height, from.width, from.channels);
    quarterTurn(from, pixels->view(), {quarters == 1});
    const Resolution resolution = picture.resolution();
    return picture.withPixels(std::move(pixels)).withResolution({resolution.vertical, resolution.horizontal});
}

Raster mirroredSideways(const Raster &picture)
{
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(from.width, from.height, from.channels);
    for (int y = 0; y < from.height; ++y)
        copyReversed(from.row(y), from.width, from.channels, pixels->view().row(y));
    return picture.withPixels(std::move(pixels));
}

} // namespace vandrel

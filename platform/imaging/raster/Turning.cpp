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

/// Rows of the target.
struct TurnedRows {
    int first;
    int end;
    bool clockwise;
};

/// Target column x is the source's row x from the bottom (clockwise) or from the top; its rows run along it forwards
/// or backwards. In squares, so that neither side leaves the processor's cache.
template<int Octets>
void turnRows(const ConstPixelView &from, const PixelView &to, const TurnedRows &rows)
{
    constexpr int square = 32;
    const auto stride = static_cast<std::ptrdiff_t>(from.stride);
    for (int top = rows.first; top < rows.end; top += square) {
        for (int left = 0; left < to.width; left += square) {
            const int bottom = std::min(rows.end, top + square);
            const int right = std::min(to.width, left + square);
            for (int y = top; y < bottom; ++y) {
                const std::uint8_t *source
                    = rows.clockwise ? from.at(y, from.height - 1 - left) : from.at(from.width - 1 - y, left);
                const std::ptrdiff_t step = rows.clockwise ? -stride : stride;
                std::uint8_t *target = to.at(left, y);
                for (int x = left; x < right; ++x, target += Octets, source += step)
                    std::memcpy(target, source, Octets);
            }
        }
    }
}

void turnRows(const ConstPixelView &from, const PixelView &to, const TurnedRows &rows)
{
    if (from.channels == 1)
        turnRows<1>(from, to, rows);
    else if (from.channels == 3)
        turnRows<3>(from, to, rows);
    else
        turnRows<4>(from, to, rows);
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

Raster turned(const Raster &picture, int quarters, const RowSharing &share)
{
    if (quarters == 0)
        return picture;
    if (quarters == 2)
        return upsideDown(picture);
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(from.height, from.width, from.channels);
    const auto turn = [&](int first, int end) {
        turnRows(from, pixels->view(), {first, end, quarters == 1});
    };
    if (share)
        share(pixels->view().height, turn);
    else
        turn(0, pixels->view().height);
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

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
void turnUpright(const ConstPixelView &from, const PixelView &to, const TurnedRows &rows)
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

void turnRows(const ConstPixelView &from, const PixelView &to, int quarters, int first, int end)
{
    if (quarters == 2) {
        for (int y = first; y < end; ++y)
            copyReversed(from.row(from.height - 1 - y), from.width, from.channels, to.row(y));
        return;
    }
    const TurnedRows rows{first, end, quarters == 1};
    if (from.channels == 1)
        turnUpright<1>(from, to, rows);
    else if (from.channels == 3)
        turnUpright<3>(from, to, rows);
    else
        turnUpright<4>(from, to, rows);
}

Raster turned(const Raster &picture, int quarters, const RowSharing &share)
{
    if (quarters == 0)
        return picture;
    const ConstPixelView from = picture.view();
    const bool isUpright = quarters != 2;
    auto pixels = isUpright ? PixelBuffer::make(from.height, from.width, from.channels)
                            : PixelBuffer::make(from.width, from.height, from.channels);
    const PixelView to = pixels->view();
    const auto turn = [&](int first, int end) { turnRows(from, to, quarters, first, end); };
    if (share)
        share(to.height, turn);
    else
        turn(0, to.height);
    const Raster result = picture.withPixels(std::move(pixels));
    const Resolution resolution = picture.resolution();
    return isUpright ? result.withResolution({resolution.vertical, resolution.horizontal}) : result;
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

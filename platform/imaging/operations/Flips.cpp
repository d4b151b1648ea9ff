#include "platform/imaging/operations/Flips.h"

#include <algorithm>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/Workspace.h"
#include "platform/imaging/raster/Turning.h"

namespace vandrel {

namespace {

/// Writes one row of the area.
using RowWriter = void (*)(const ConstPixelView &from, const PixelArea &area, int y, std::uint8_t *to);

void writeReversed(const ConstPixelView &from, const PixelArea &area, int y, std::uint8_t *to)
{
    copyReversed(from.at(area.left, y), area.width, from.channels, to);
}

void writeOpposite(const ConstPixelView &from, const PixelArea &area, int y, std::uint8_t *to)
{
    const int opposite = area.top + area.bottom() - 1 - y;
    std::copy_n(from.at(area.left, opposite), static_cast<std::ptrdiff_t>(area.width) * from.channels, to);
}

Outcome moveRows(const Subject &subject, RowWriter write)
{
    return refusingOnFailure(subject, [&]() -> Outcome {
        const Raster &picture = subject.picture;
        const PixelArea area = workingArea(subject);
        const ConstPixelView from = picture.view();
        auto pixels = coversPicture(area, picture) ? PixelBuffer::make(from.width, from.height, from.channels)
                                                   : copiedInBands(picture);
        inBands(area, subject.progress, [&](int first, int end) {
            for (int y = first; y < end; ++y)
                write(from, area, y, pixels->view().at(area.left, y));
        });
        return {true, picture.withPixels(std::move(pixels))};
    });
}

} // namespace

Outcome flipHorizontally(const Subject &subject)
{
    return moveRows(subject, writeReversed);
}

Outcome flipVertically(const Subject &subject)
{
    return moveRows(subject, writeOpposite);
}

} // namespace vandrel

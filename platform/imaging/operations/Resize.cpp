#include "platform/imaging/operations/Resize.h"

#include <cmath>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/Scaling.h"
#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

namespace {

void takeNearest(const ConstPixelView &from, const PixelView &to, const OperationProgress &progress)
{
    std::vector<int> columns(static_cast<std::size_t>(to.width));
    for (std::int64_t x = 0; x < to.width; ++x)
        columns[static_cast<std::size_t>(x)] = static_cast<int>((2 * x + 1) * from.width / (2 * to.width));
    inBands({0, 0, to.width, to.height}, progress, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const std::int64_t row = (2 * std::int64_t{y} + 1) * from.height / (2 * to.height);
            const std::uint8_t *source = from.row(static_cast<int>(row));
            std::uint8_t *target = to.row(y);
            for (std::size_t x = 0; x < columns.size(); ++x)
                target[x] = source[columns[x]];
        }
    });
}

void putOnFiveBits(const PixelView &view)
{
    inBands({0, 0, view.width, view.height}, {}, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            std::uint8_t *row = view.row(y);
            for (int octet = 0; octet < view.width * view.channels; ++octet)
                row[octet] = onFiveBits(row[octet]);
        }
    });
}

} // namespace

std::optional<PixelArea> sizeAfterResize(double width, double height, int bitsPerPixel)
{
    constexpr double beyond = 1e6;
    if (!(width >= 1 && height >= 1 && width < beyond && height < beyond))
        return {};
    const PixelArea size{0, 0, static_cast<int>(std::floor(width + 0.5)),
                         static_cast<int>(std::floor(height + 0.5))};
    if (!isWithinLimits(size.width, size.height, channelsOfDepth(bitsPerPixel)))
        return {};
    return size;
}

Outcome resize(const Subject &subject, double width, double height)
{
    const Raster &picture = subject.picture;
    const auto size = sizeAfterResize(width, height, picture.bitsPerPixel());
    if (!size || picture.isNull())
        return refused(subject);
    if (*size == picture.area())
        return unchanged(subject);
    return refusingOnFailure({picture}, [&]() -> Outcome {
        const ConstPixelView from = picture.view();
        auto pixels = PixelBuffer::make(size->width, size->height, from.channels);
        if (picture.isIndexed())
            takeNearest(from, pixels->view(), subject.progress);
        else
            scaleSmoothly(picture, pixels->view(), subject.progress);
        if (picture.bitsPerPixel() == 16)
            putOnFiveBits(pixels->view());
        return {true, picture.withPixels(std::move(pixels))};
    });
}

} // namespace vandrel

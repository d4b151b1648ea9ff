#include "platform/imaging/operations/Rotate.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include <opencv2/core.hpp>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/WarpTiles.h"
#include "platform/imaging/operations/Workspace.h"
#include "platform/imaging/raster/Conversions.h"
#include "platform/imaging/raster/PictureLimits.h"
#include "platform/imaging/raster/Turning.h"

namespace vandrel {

namespace {

/// Maps points around one middle to points around another, turned back by the angle.
cv::Matx33d turnedBack(double degrees, cv::Point2d fromMiddle, cv::Point2d toMiddle)
{
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const cv::Matx33d toOrigin(1, 0, -fromMiddle.x, 0, 1, -fromMiddle.y, 0, 0, 1);
    const cv::Matx33d turn(cosine, sine, 0, -sine, cosine, 0, 0, 0, 1);
    const cv::Matx33d toPlace(1, 0, toMiddle.x, 0, 1, toMiddle.y, 0, 0, 1);
    return toPlace * turn * toOrigin;
}

/// The whole pixels that a length needs; a rounding error makes no pixel.
double wholePixels(double length)
{
    return std::ceil(length - 1e-6);
}

Outcome rotateWhole(const Subject &subject, double degrees)
{
    const Raster source = asValues(subject.picture, GrayResult::StaysGray);
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = std::abs(std::cos(angle));
    const double sine = std::abs(std::sin(angle));
    const double width = wholePixels(source.width() * cosine + source.height() * sine);
    const double height = wholePixels(source.width() * sine + source.height() * cosine);
    const ConstPixelView from = source.view();
    if (!isWithinLimits(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height), from.channels))
        return refused(subject);
    auto pixels = PixelBuffer::make(static_cast<int>(width), static_cast<int>(height), from.channels);
    warpTiles(from, pixels->view(), {0, 0, pixels->width(), pixels->height()},
              turnedBack(degrees, {width / 2, height / 2}, {from.width / 2.0, from.height / 2.0}),
              subject.progress);
    return {true, source.withPixels(std::move(pixels))};
}

ConstPixelView partOf(const ConstPixelView &view, const PixelArea &area)
{
    return {view.at(area.left, area.top), area.width, area.height, view.channels, view.stride};
}

Outcome rotateArea(const Subject &subject, double degrees)
{
    return operate(subject, GrayResult::StaysGray, [degrees](Workspace &work) {
        const PixelArea &area = work.area();
        const cv::Point2d middle(area.width / 2.0, area.height / 2.0);
        const cv::Point2d middleInPicture(area.left + middle.x, area.top + middle.y);
        warpTiles(partOf(work.source(), area), work.target(), area,
                  turnedBack(degrees, middleInPicture, middle), work.progress());
    });
}

/// The octets of a white pixel; absent for a palette without white.
std::optional<std::uint8_t> whiteOf(const Raster &picture)
{
    if (!picture.isIndexed())
        return 255;
    const Palette &palette = picture.palette();
    const auto found = std::find(palette.begin(), palette.end(), Colour{255, 255, 255});
    if (found == palette.end())
        return {};
    return static_cast<std::uint8_t>(found - palette.begin());
}

/// The part of a picture in a picture of its own.
Raster cut(const Raster &picture, const PixelArea &area)
{
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(area.width, area.height, from.channels);
    for (int y = 0; y < area.height; ++y)
        std::copy_n(from.at(area.left, area.top + y), static_cast<std::ptrdiff_t>(area.width) * from.channels,
                    pixels->view().row(y));
    return picture.withPixels(std::move(pixels));
}

/// The whole picture turned by quarters.
Raster turnWhole(const Subject &subject, int quarters)
{
    const Raster &picture = subject.picture;
    return turned(picture, quarters, [&](int rows, const std::function<void(int, int)> &work) {
        inBands({0, 0, picture.height(), rows}, subject.progress, work);
    });
}

/// Turns an area by quarters: its pixels stay as they are, in their palette if that has the white for what is
/// uncovered.
Outcome turnArea(const Subject &subject, int quarters)
{
    const PixelArea area = workingArea(subject);
    const bool uncovers = quarters != 2 && area.width != area.height;
    const Raster source
        = uncovers && !whiteOf(subject.picture) ? asTrueColour(subject.picture) : subject.picture;
    const Raster part = turned(cut(source, area), quarters);
    auto pixels = copyOfPixels(source);
    const PixelView to = pixels->view();
    const std::uint8_t white = whiteOf(source).value_or(255);
    const auto octets = static_cast<std::ptrdiff_t>(to.channels);
    const int right = (area.width - part.width()) / 2;
    const int down = (area.height - part.height()) / 2;
    for (int y = 0; y < area.height; ++y) {
        std::fill_n(to.at(area.left, area.top + y), area.width * octets, white);
        if (y < down || y >= down + part.height())
            continue;
        const int skipped = std::max(-right, 0);
        const int count = std::min(part.width(), area.width);
        std::copy_n(part.view().at(skipped, y - down), count * octets,
                    to.at(area.left + std::max(right, 0), area.top + y));
    }
    return {true, source.withPixels(std::move(pixels))};
}

} // namespace

Outcome rotate(const Subject &subject, double degrees)
{
    if (workingArea(subject).isEmpty() || !std::isfinite(degrees))
        return refused(subject);
    const double turn = std::fmod(degrees, 360.0);
    if (turn == 0)
        return unchanged(subject);
    return refusingOnFailure(subject, [&]() -> Outcome {
        const bool whole = coversPicture(workingArea(subject), subject.picture);
        if (std::fmod(turn, 90.0) == 0) {
            const int quarters = (static_cast<int>(turn / 90) + 4) % 4;
            return whole ? Outcome{true, turnWhole(subject, quarters)} : turnArea(subject, quarters);
        }
        return whole ? rotateWhole(subject, turn) : rotateArea(subject, turn);
    });
}

} // namespace vandrel

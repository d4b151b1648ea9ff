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
    const Raster &source = subject.picture;
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = std::abs(std::cos(angle));
    const double sine = std::abs(std::sin(angle));
    const double width = wholePixels(source.width() * cosine + source.height() * sine);
    const double height = wholePixels(source.width() * sine + source.height() * cosine);
    const int channels = channelsOfValues(source, GrayResult::StaysGray);
    if (!isWithinLimits(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height), channels))
        return refused(subject);
    auto pixels = PixelBuffer::make(static_cast<int>(width), static_cast<int>(height), channels);
    warpTiles(source, source.area(), pixels->view(), {0, 0, pixels->width(), pixels->height()},
              turnedBack(degrees, {width / 2, height / 2}, {source.width() / 2.0, source.height() / 2.0}),
              subject.progress);
    return {true, withValues(source, std::move(pixels))};
}

template<typename View>
View partOf(const View &view, const PixelArea &area)
{
    return {view.at(area.left, area.top), area.width, area.height, view.channels, view.stride};
}

Outcome rotateArea(const Subject &subject, double degrees)
{
    return operate(subject, GrayResult::StaysGray, [degrees](Workspace &work) {
        const PixelArea &area = work.area();
        const cv::Point2d middle(area.width / 2.0, area.height / 2.0);
        const cv::Point2d middleInPicture(area.left + middle.x, area.top + middle.y);
        warpTiles(work.picture(), area, work.target(), area, turnedBack(degrees, middleInPicture, middle),
                  work.progress());
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

/// The whole picture turned by quarters.
Raster turnWhole(const Subject &subject, int quarters)
{
    const Raster &picture = subject.picture;
    return turned(picture, quarters, [&](int rows, const std::function<void(int, int)> &work) {
        const int width = quarters == 2 ? picture.width() : picture.height();
        inBands({0, 0, width, rows}, subject.progress, work);
    });
}

/// What stays in an area when it is turned about its middle by quarters: a square, or all of it turned by two of them.
struct TurnedPart {
    PixelArea from;
    PixelArea to;
};

TurnedPart turnedPart(const PixelArea &area, int quarters)
{
    if (quarters == 2)
        return {area, area};
    const int side = std::min(area.width, area.height);
    const int across = area.width - side;
    const int down = area.height - side;
    // Of an odd rest the turned area lies nearer to the upper left, so that more of it is cut off there.
    const int right = quarters == 1 ? across / 2 : (across + 1) / 2;
    const int lower = quarters == 1 ? (down + 1) / 2 : down / 2;
    return {{area.left + right, area.top + lower, side, side},
            {area.left + across / 2, area.top + down / 2, side, side}};
}

void fillRows(const PixelView &to, const PixelArea &area, std::uint8_t value)
{
    for (int y = area.top; y < area.bottom(); ++y)
        std::fill_n(to.at(area.left, y), static_cast<std::ptrdiff_t>(area.width) * to.channels, value);
}

/// Turns an area by quarters: its pixels stay as they are, in their palette if that has the white for what is
/// uncovered.
Outcome turnArea(const Subject &subject, int quarters)
{
    const PixelArea area = workingArea(subject);
    const TurnedPart part = turnedPart(area, quarters);
    const std::optional<std::uint8_t> white = whiteOf(subject.picture);
    const bool lacksWhite = part.to != area && !white;
    const Raster source = lacksWhite ? asTrueColour(subject.picture) : subject.picture;
    auto pixels = copiedInBands(source);
    if (part.to != area)
        fillRows(pixels->view(), area, white.value_or(255));
    const PixelView to = partOf(pixels->view(), part.to);
    inBands({0, 0, to.width, to.height}, subject.progress, [&](int first, int end) {
        turnRows(partOf(source.view(), part.from), to, quarters, first, end);
    });
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

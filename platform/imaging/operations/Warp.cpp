#include "platform/imaging/operations/Warp.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <opencv2/imgproc.hpp>

#include "platform/imaging/operations/WarpTiles.h"
#include "platform/imaging/operations/Workspace.h"

namespace vandrel {

namespace {

constexpr int furthest = 32000;

/// Twice the area of the triangle, positive for one that runs clockwise on the screen.
std::int64_t turnAt(PlanePoint first, PlanePoint second, PlanePoint third)
{
    return static_cast<std::int64_t>(second.x - first.x) * (third.y - second.y)
        - static_cast<std::int64_t>(second.y - first.y) * (third.x - second.x);
}

/// Whether the corners, walked around, always turn the same way.
bool isConvex(const std::array<PlanePoint, 4> &corners)
{
    const std::array<PlanePoint, 4> around{corners[0], corners[1], corners[3], corners[2]};
    int right = 0;
    int left = 0;
    for (std::size_t index = 0; index < 4; ++index) {
        const std::int64_t turn = turnAt(around[index], around[(index + 1) % 4], around[(index + 2) % 4]);
        right += turn > 0 ? 1 : 0;
        left += turn < 0 ? 1 : 0;
    }
    return right == 4 || left == 4;
}

bool isWithinReach(const std::array<PlanePoint, 4> &corners)
{
    return std::all_of(corners.begin(), corners.end(), [](const PlanePoint &corner) {
        return std::abs(static_cast<std::int64_t>(corner.x)) <= furthest
            && std::abs(static_cast<std::int64_t>(corner.y)) <= furthest;
    });
}

/// Maps the target's points to those of the area, whose upper left corner is the origin.
cv::Matx33d mapToArea(const PixelArea &area, const std::array<PlanePoint, 4> &corners)
{
    const auto width = static_cast<float>(area.width);
    const auto height = static_cast<float>(area.height);
    const std::array<cv::Point2f, 4> inArea{cv::Point2f(0, 0), cv::Point2f(width, 0), cv::Point2f(0, height),
                                            cv::Point2f(width, height)};
    std::array<cv::Point2f, 4> inTarget{};
    cv::Point2d middle(0, 0);
    for (std::size_t index = 0; index < 4; ++index) {
        inTarget[index]
            = cv::Point2f(static_cast<float>(corners[index].x), static_cast<float>(corners[index].y));
        middle += cv::Point2d(corners[index].x / 4.0, corners[index].y / 4.0);
    }
    cv::Matx33d map = cv::getPerspectiveTransform(inTarget.data(), inArea.data());
    // The figure lies on the side of the horizon where the divisor is positive.
    const cv::Vec3d seen = map * cv::Vec3d(middle.x, middle.y, 1);
    if (seen[2] < 0)
        map = -map;
    return map;
}

} // namespace

Outcome warp(const Subject &subject, const std::array<PlanePoint, 4> &corners)
{
    if (!isWithinReach(corners) || !isConvex(corners))
        return refused(subject);
    return operate(subject, GrayResult::StaysGray, [&corners](Workspace &work) {
        const PixelArea &area = work.area();
        warpTiles(work.picture(), area, work.target(), area, mapToArea(area, corners), work.progress());
    });
}

} // namespace vandrel

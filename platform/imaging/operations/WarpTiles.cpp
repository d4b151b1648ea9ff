#include "platform/imaging/operations/WarpTiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>

#include <opencv2/imgproc.hpp>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/MatViews.h"
#include "platform/imaging/operations/ValueRows.h"

namespace vandrel {

namespace {

constexpr int tileSide = 256;
/// Beyond this the library's coordinates do not reach.
constexpr int longestSourceSide = 16000;
/// So many pixels are looked up in a palette at a time, to take little memory.
constexpr int mostLookedUp = 1'000'000;

/// Where the corners of the tile lie in the source.
struct SourceBounds {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

class TileWarp
{
public:
    TileWarp(const Raster &picture,
             const PixelArea &part,
             const PixelView &target,
             const cv::Matx33d &toSource)
        : m_picture(picture), m_part(part), m_target(target), m_toSource(toSource)
    { }

    void warp(const cv::Rect &tile) const
    {
        const auto bounds = boundsOf(tile);
        if (!bounds) {
            divideOr(tile, [&] { fillWhite(tile); });
            return;
        }
        const double margin = 2;
        const cv::Rect needed = pixelsWithin(
            {bounds->left - margin, bounds->top - margin, bounds->right + margin, bounds->bottom + margin});
        if (needed.empty())
            fillWhite(tile);
        else if (needed.width > longestSourceSide || needed.height > longestSourceSide)
            divideOr(tile, [&] { fillWhite(tile); });
        else if (m_picture.isIndexed() && needed.area() > mostLookedUp)
            divideOr(tile, [&] { warpFrom(tile, needed); });
        else
            warpFrom(tile, needed);
    }

private:
    /// Absent where the tile meets or crosses the horizon, behind which there is no source.
    std::optional<SourceBounds> boundsOf(const cv::Rect &tile) const
    {
        const std::array<cv::Vec3d, 4> corners{cv::Vec3d(tile.x, tile.y, 1),
                                               cv::Vec3d(tile.x + tile.width, tile.y, 1),
                                               cv::Vec3d(tile.x, tile.y + tile.height, 1),
                                               cv::Vec3d(tile.x + tile.width, tile.y + tile.height, 1)};
        constexpr double beyond = 1e9;
        SourceBounds bounds{beyond, beyond, -beyond, -beyond};
        for (const cv::Vec3d &corner : corners) {
            const cv::Vec3d point = m_toSource * corner;
            if (!(point[2] > 1e-9))
                return {};
            bounds.left = std::min(bounds.left, point[0] / point[2]);
            bounds.top = std::min(bounds.top, point[1] / point[2]);
            bounds.right = std::max(bounds.right, point[0] / point[2]);
            bounds.bottom = std::max(bounds.bottom, point[1] / point[2]);
        }
        return bounds;
    }

    cv::Rect pixelsWithin(const SourceBounds &bounds) const
    {
        const double left = std::clamp<double>(std::floor(bounds.left), 0, m_part.width);
        const double top = std::clamp<double>(std::floor(bounds.top), 0, m_part.height);
        const double right = std::clamp<double>(std::ceil(bounds.right), 0, m_part.width);
        const double bottom = std::clamp<double>(std::ceil(bounds.bottom), 0, m_part.height);
        return {static_cast<int>(left), static_cast<int>(top), static_cast<int>(std::max(right - left, 0.0)),
                static_cast<int>(std::max(bottom - top, 0.0))};
    }

    template<typename Otherwise>
    void divideOr(const cv::Rect &tile, Otherwise otherwise) const
    {
        if (tile.width <= 1 && tile.height <= 1) {
            otherwise();
            return;
        }
        cv::Rect first = tile;
        cv::Rect second = tile;
        if (tile.width >= tile.height) {
            first.width /= 2;
            second.x += first.width;
            second.width -= first.width;
        } else {
            first.height /= 2;
            second.y += first.height;
            second.height -= first.height;
        }
        warp(first);
        warp(second);
    }

    void fillWhite(const cv::Rect &tile) const { matOf(m_target)(tile).setTo(cv::Scalar::all(255)); }

    void warpFrom(const cv::Rect &tile, const cv::Rect &needed) const
    {
        // The library's points are the pixels' middles.
        const cv::Matx33d fromTile(1, 0, tile.x + 0.5, 0, 1, tile.y + 0.5, 0, 0, 1);
        const cv::Matx33d toNeeded(1, 0, -needed.x - 0.5, 0, 1, -needed.y - 0.5, 0, 0, 1);
        const cv::Matx33d map = toNeeded * m_toSource * fromTile;
        cv::Mat target = matOf(m_target)(tile);
        const cv::Mat source = pixelsOf(needed);
        const int flags = cv::INTER_LINEAR | cv::WARP_INVERSE_MAP;
        if (map(2, 0) == 0 && map(2, 1) == 0)
            cv::warpAffine(source, target, map.get_minor<2, 3>(0, 0) * (1 / map(2, 2)), target.size(), flags,
                           cv::BORDER_CONSTANT, cv::Scalar::all(255));
        else
            cv::warpPerspective(source, target, map, target.size(), flags, cv::BORDER_CONSTANT,
                                cv::Scalar::all(255));
    }

    /// Some of the part's pixels: as they are in memory, or looked up.
    cv::Mat pixelsOf(const cv::Rect &needed) const
    {
        const cv::Rect inPicture = needed + cv::Point(m_part.left, m_part.top);
        if (!m_picture.isIndexed())
            return matOf(m_picture.view())(inPicture);
        cv::Mat lookedUp(needed.height, needed.width, CV_8UC(m_target.channels));
        ValueRows rows(m_picture, m_target.channels);
        const std::size_t octets = lookedUp.elemSize() * static_cast<std::size_t>(needed.width);
        for (int y = 0; y < needed.height; ++y)
            std::memcpy(lookedUp.ptr(y), rows.at(inPicture.x, inPicture.y + y, needed.width), octets);
        return lookedUp;
    }

    const Raster &m_picture;
    PixelArea m_part;
    PixelView m_target;
    cv::Matx33d m_toSource;
};

} // namespace

void warpTiles(const Raster &picture,
               const PixelArea &part,
               const PixelView &target,
               const PixelArea &area,
               const cv::Matx33d &toSource,
               const OperationProgress &progress)
{
    const TileWarp warp(picture, part, target, toSource);
    const int tileRows = (area.height + tileSide - 1) / tileSide;
    inBands({0, 0, area.width * tileSide, tileRows}, progress, [&](int first, int end) {
        for (int tileRow = first; tileRow < end; ++tileRow) {
            const int top = area.top + tileRow * tileSide;
            const int height = std::min(tileSide, area.bottom() - top);
            for (int left = area.left; left < area.right(); left += tileSide)
                warp.warp({left, top, std::min(tileSide, area.right() - left), height});
        }
    });
}

} // namespace vandrel

#include "platform/imaging/operations/Deskew.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "platform/imaging/operations/PixelPlanes.h"
#include "platform/imaging/operations/Rotate.h"
#include "platform/imaging/operations/Scaling.h"

namespace vandrel {

namespace {

constexpr int longestSide = 2000;
constexpr int furthestTenths = 150;
constexpr int leastTenths = 2;
/// Columns that are shifted together; over so few, the largest angle moves a row by one pixel.
constexpr int columnsTogether = 4;

/// The brightness of a picture, made small enough for the search.
cv::Mat smallLuma(const Raster &picture)
{
    const double scale
        = std::min(1.0, static_cast<double>(longestSide) / std::max(picture.width(), picture.height()));
    const int width = std::max(1, static_cast<int>(picture.width() * scale));
    const int height = std::max(1, static_cast<int>(picture.height() * scale));
    auto pixels = PixelBuffer::make(width, height, picture.view().channels == 4 ? 4 : 3);
    const PixelView small = pixels->view();
    scaleSmoothly(picture, small, {});
    cv::Mat brightness(height, width, CV_8UC1);
    for (int y = 0; y < height; ++y)
        lumaRow(small.row(y), width, small.channels, brightness.ptr<std::uint8_t>(y));
    return brightness;
}

/// For each group of columns, how many dark pixels each of its rows has.
class DarkColumns
{
public:
    explicit DarkColumns(const cv::Mat &brightness)
        : m_rows(brightness.rows), m_groups((brightness.cols + columnsTogether - 1) / columnsTogether),
          m_counts(static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_groups))
    {
        cv::Mat dark;
        cv::threshold(brightness, dark, 0, 1, cv::THRESH_BINARY_INV | cv::THRESH_OTSU);
        for (int y = 0; y < m_rows; ++y) {
            const auto *row = dark.ptr<std::uint8_t>(y);
            for (int x = 0; x < dark.cols; ++x)
                m_counts[index(x / columnsTogether, y)] += row[x];
        }
    }

    /// How much the rows differ in darkness once the picture's right side is lifted by the angle.
    double contrastAt(double degrees) const
    {
        const double slope = std::tan(degrees * std::numbers::pi / 180);
        const int reach = static_cast<int>(std::abs(slope) * m_groups * columnsTogether / 2) + 2;
        std::vector<std::int32_t> profile(static_cast<std::size_t>(m_rows + 2 * reach));
        for (int group = 0; group < m_groups; ++group) {
            const double across = (group - m_groups / 2.0) * columnsTogether;
            const auto lift = static_cast<std::ptrdiff_t>(reach - std::lround(across * slope));
            const std::uint8_t *from = &m_counts[index(group, 0)];
            std::int32_t *to = profile.data() + lift;
            for (int y = 0; y < m_rows; ++y)
                to[y] += from[y];
        }
        return variance(profile);
    }

private:
    std::size_t index(int group, int y) const
    {
        return static_cast<std::size_t>(group) * static_cast<std::size_t>(m_rows)
            + static_cast<std::size_t>(y);
    }

    /// Of the rows as they are at angle 0: the padding must not count, for it grows with the angle.
    double variance(const std::vector<std::int32_t> &profile) const
    {
        double sum = 0;
        double squares = 0;
        for (const std::int32_t count : profile) {
            sum += count;
            squares += static_cast<double>(count) * count;
        }
        const double mean = sum / m_rows;
        return squares / m_rows - mean * mean;
    }

    int m_rows;
    int m_groups;
    std::vector<std::uint8_t> m_counts;
};

} // namespace

double skewOf(const Raster &picture)
{
    const DarkColumns columns(smallLuma(picture));
    const double straight = columns.contrastAt(0);
    double best = straight;
    int bestTenths = 0;
    for (int tenths = -furthestTenths; tenths <= furthestTenths; ++tenths) {
        const double contrast = columns.contrastAt(tenths / 10.0);
        if (contrast > best) {
            best = contrast;
            bestTenths = tenths;
        }
    }
    return std::abs(bestTenths) < leastTenths || best < straight * 1.05 ? 0 : bestTenths / 10.0;
}

Outcome deskew(const Subject &subject)
{
    Subject whole = subject;
    whole.area.reset();
    return refusingOnFailure(whole, [&]() -> Outcome {
        const double skew = skewOf(whole.picture);
        return skew == 0 ? unchanged(whole) : rotate(whole, -skew);
    });
}

} // namespace vandrel

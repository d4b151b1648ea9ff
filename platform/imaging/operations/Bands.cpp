#include "platform/imaging/operations/Bands.h"

#include <algorithm>
#include <cstdint>

#include <opencv2/core.hpp>

namespace vandrel {

namespace {

/// Below this many pixels, waking another thread takes longer than it saves.
constexpr std::int64_t worthSharing = 32 * 1024;
/// Between two reports of progress.
constexpr std::int64_t pixelsPerReport = 4'000'000;

void shareRows(int first, int end, std::int64_t width, const std::function<void(int, int)> &work)
{
    if ((end - first) * width < worthSharing) {
        work(first, end);
        return;
    }
    // More bands than processors, for one may be busy with something else.
    const double bands = std::min(end - first, cv::getNumThreads() * 4);
    cv::parallel_for_(
        cv::Range(first, end), [&work](const cv::Range &rows) { work(rows.start, rows.end); }, bands);
}

} // namespace

void inBands(const PixelArea &area,
             const OperationProgress &progress,
             const std::function<void(int, int)> &work)
{
    if (!progress) {
        shareRows(area.top, area.bottom(), area.width, work);
        return;
    }
    const std::int64_t fewestRows = std::min(16, cv::getNumThreads() * 2);
    const int rows = static_cast<int>(std::max(fewestRows, pixelsPerReport / area.width));
    for (int first = area.top; first < area.bottom();) {
        const int end = area.bottom() - first > rows ? first + rows : area.bottom();
        shareRows(first, end, area.width, work);
        progress(static_cast<int>(static_cast<std::int64_t>(end - area.top) * 100 / area.height));
        first = end;
    }
}

} // namespace vandrel

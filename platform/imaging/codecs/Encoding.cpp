#include "platform/imaging/codecs/Encoding.h"

#include <algorithm>

#include "platform/imaging/codecs/PiecesInOrder.h"

namespace vandrel {

namespace {

/// Enough that starting a thread for them does not count, and few enough that what is waiting to be written does not
/// either.
constexpr int pixelsOfBand = 250'000;

} // namespace

void writeBands(int width,
                int height,
                const std::function<Octets(int first, int end)> &encode,
                OctetWriter &out,
                const FileProgress &progress)
{
    const int rows = std::max(1, pixelsOfBand / width);
    const int bands = (height + rows - 1) / rows;
    int written = 0;
    inOrder<Octets>(
        bands,
        [&](int band) {
            const int first = band * rows;
            return encode(first, std::min(first + rows, height));
        },
        [&](const Octets &octets) {
            out.write(octets.data(), static_cast<qint64>(octets.size()));
            ++written;
            reportProgress(progress, written, bands);
        });
}

} // namespace vandrel

#include "platform/imaging/codecs/Decoding.h"

#include <cstring>
#include <new>

#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

namespace {

/// A small file that claims this much is believed: its damage shows soon enough.
constexpr std::int64_t harmless = 64 * 1024 * 1024;

} // namespace

void checkCancelled(const DecodeRequest &request)
{
    if (request.isCancelled && request.isCancelled())
        throw DecodingCancelled();
}

void reportProgress(const FileProgress &progress, std::int64_t done, std::int64_t whole)
{
    if (progress)
        progress(static_cast<int>(done * 100 / whole));
}

std::shared_ptr<PixelBuffer> pixelsForClaim(std::int64_t width,
                                            std::int64_t height,
                                            int channels,
                                            std::int64_t octetsInFile,
                                            std::int64_t mostPerOctet)
{
    if (!isWithinLimits(width, height, channels))
        throw PictureFailure(
            pictureText("says that it is %1 x %2 pixels large; pictures of at most 65535 pixels a "
                        "side and 300 million "
                        "pixels can be opened.")
                .arg(width)
                .arg(height));
    const std::int64_t octets = width * height * channels;
    if (octets > harmless && octets / mostPerOctet > octetsInFile)
        throw PictureFailure(
            pictureText("says that it is %1 x %2 pixels large, but is much too short for that.")
                .arg(width)
                .arg(height));
    try {
        auto pixels = PixelBuffer::make(static_cast<int>(width), static_cast<int>(height), channels);
        std::memset(pixels->view().data, 0, pixels->octets());
        return pixels;
    } catch (const std::bad_alloc &) {
        throw PictureFailure(pictureText("needs more memory than there is."));
    }
}

QString endsEarly(int rows, int height)
{
    return pictureText("The file ends early: %1 of %2 rows of the picture are there.").arg(rows).arg(height);
}

} // namespace vandrel

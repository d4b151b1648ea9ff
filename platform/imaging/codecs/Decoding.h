#pragma once

#include <functional>
#include <optional>

#include <QSize>
#include <QString>

#include "platform/imaging/raster/Raster.h"

class QIODevice;

namespace vandrel {

/// Told from time to time how much of reading or writing a file is done: 0 to 100. On any thread,
/// but on one at a time. May be empty.
using FileProgress = std::function<void(int percent)>;

/// What is wanted of a decoder.
struct DecodeRequest {
    /// The box that a reduced picture is made for; absent for the whole picture. A decoder that can decode a smaller
    /// picture for less may do so, but not smaller than twice the box; others pay no attention.
    std::optional<QSize> box = {};
    /// Asked from time to time; decoding ends with DecodingCancelled when it says true. May be empty.
    std::function<bool()> isCancelled = {};
    /// Of those readers that know; a drawing tells nothing.
    FileProgress progress = {};
    /// The program that draws metafiles and vector pictures; empty for the suite's own.
    QString drawingProgram = {};
};

/// What a file held.
struct DecodedPicture {
    Raster picture;
    /// What of the picture is missing or wrong, as a whole sentence; empty where nothing is.
    QString damage = {};
};

/// Raises DecodingCancelled when the request's result is no longer wanted.
void checkCancelled(const DecodeRequest &request);

/// Reports that so much of the whole is done.
void reportProgress(const FileProgress &progress, std::int64_t done, std::int64_t whole);

/// Both, for readers that go row by row: once in 64 rows, of which so many are done.
inline void atRow(const DecodeRequest &request, int rows, int height)
{
    if (rows % 64 != 0)
        return;
    checkCancelled(request);
    reportProgress(request.progress, rows, height);
}

/// Makes the memory of a picture whose size a file claims. Raises PictureFailure for a size outside of the limits,
/// for one beside which the file is far too small to be honest, and where memory is short. `mostPerOctet` is how many
/// octets of pixels one octet of such a file can give.
std::shared_ptr<PixelBuffer> pixelsForClaim(std::int64_t width,
                                            std::int64_t height,
                                            int channels,
                                            std::int64_t octetsInFile,
                                            std::int64_t mostPerOctet);

/// The sentence about a picture that ends early.
QString endsEarly(int rows, int height);

} // namespace vandrel

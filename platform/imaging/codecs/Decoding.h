#pragma once

#include <functional>
#include <optional>

#include <QSize>
#include <QString>

#include "platform/imaging/raster/Raster.h"

class QIODevice;

namespace vandrel {

/// What is wanted of a decoder.
struct DecodeRequest {
    /// The box that a reduced picture is made for; absent for the whole picture. A decoder that can decode a smaller
    /// picture for less may do so, but not smaller than twice the box; others pay no attention.
    std::optional<QSize> box = {};
    /// Asked from time to time; decoding ends with DecodingCancelled when it says true. May be empty.
    std::function<bool()> isCancelled = {};
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

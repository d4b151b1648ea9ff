#pragma once

#include <array>

#include "platform/imaging/codecs/OctetReader.h"
#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// How the pixels of a bitmap are stored.
enum class BmpCompression { None, Rle8, Rle4 };

/// What the header of a Windows or OS/2 bitmap says, checked: headers of 12, 40 to 64, 108 and 124 octets.
struct BmpHeader {
    int width = 0;
    int height = 0;
    bool topDown = false;
    /// 1, 2, 4, 8, 16, 24 or 32.
    int bits = 0;
    BmpCompression compression = BmpCompression::None;
    /// Which bits of a pixel of 16 or 32 are red, green, blue and alpha.
    std::array<std::uint32_t, 4> masks{};
    Palette palette;
    Resolution resolution;
    /// Where the pixels begin in the file.
    qint64 pixelsAt = 0;
};

/// Reads the header and the palette of a bitmap file, or of one without the file header in front. Raises
/// PictureFailure for what is none or is of a kind that cannot be read.
BmpHeader readBmpHeader(OctetReader &file);

} // namespace vandrel

#include "platform/imaging/codecs/BmpHeader.h"

#include <limits>

#include "platform/imaging/codecs/PictureFailure.h"

namespace vandrel {

namespace {

constexpr std::uint32_t coreHeader = 12;
constexpr std::uint32_t shortestHeader = 40;
constexpr std::uint32_t headerWithAlpha = 56;
constexpr std::uint32_t longestHeader = 124;
constexpr double metresPerInch = 0.0254;

/// The fields as they stand in the file.
struct RawHeader {
    std::uint32_t headerSize = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::uint32_t bits = 0;
    std::uint32_t compression = 0;
    std::uint32_t coloursUsed = 0;
    /// As the file header says; 0 without one.
    qint64 pixelsAt = 0;
    Resolution resolution;
    bool hasMasks = false;
};

RawHeader readRaw(OctetReader &file, std::array<std::uint32_t, 4> &masks)
{
    RawHeader raw;
    if (file.u16() == 0x4D42) {
        file.skip(8);
        raw.pixelsAt = file.u32();
    } else {
        file.seek(0);
    }
    raw.headerSize = file.u32();
    if (raw.headerSize == coreHeader) {
        raw.width = file.u16();
        raw.height = file.u16();
        file.skip(2);
        raw.bits = file.u16();
        return raw;
    }
    if (raw.headerSize < 16 || raw.headerSize > longestHeader)
        throw PictureFailure(pictureText("is no bitmap of a known kind."));
    const qint64 end = file.position() - 4 + raw.headerSize;
    raw.width = file.s32();
    raw.height = file.s32();
    file.skip(2);
    raw.bits = file.u16();
    if (raw.headerSize >= shortestHeader) {
        raw.compression = file.u32();
        file.skip(4);
        raw.resolution.horizontal = file.s32() * metresPerInch;
        raw.resolution.vertical = file.s32() * metresPerInch;
        raw.coloursUsed = file.u32();
        file.skip(4);
    }
    // A 40-octet header has its masks behind it, longer ones inside; that of OS/2, with 64 octets, has none.
    const bool askedFor = raw.compression == 3 || raw.compression == 6;
    raw.hasMasks = askedFor && raw.headerSize != 64;
    if (raw.hasMasks || (raw.headerSize >= headerWithAlpha && raw.headerSize != 64)) {
        for (std::size_t index = 0; index < 3; ++index)
            masks[index] = file.u32();
        if (raw.headerSize >= headerWithAlpha || raw.compression == 6)
            masks[3] = file.u32();
    }
    file.seek(std::max(end, raw.hasMasks ? file.position() : end));
    return raw;
}

BmpCompression compressionOf(const RawHeader &raw)
{
    switch (raw.compression) {
    case 0:
        return BmpCompression::None;
    case 1:
        if (raw.bits == 8)
            return BmpCompression::Rle8;
        break;
    case 2:
        if (raw.bits == 4)
            return BmpCompression::Rle4;
        break;
    case 3:
    case 6:
        if ((raw.bits == 16 || raw.bits == 32) && raw.headerSize != 64)
            return BmpCompression::None;
        break;
    default:
        break;
    }
    throw PictureFailure(pictureText("is a bitmap with a kind of compression that cannot be read."));
}

void useDefaultMasks(BmpHeader &header, const RawHeader &raw)
{
    if (raw.hasMasks)
        return;
    header.masks = raw.bits == 16 ? std::array<std::uint32_t, 4>{0x7C00, 0x03E0, 0x001F, 0}
                                  : std::array<std::uint32_t, 4>{0xFF0000, 0x00FF00, 0x0000FF, 0};
}

std::int64_t coloursInFile(const RawHeader &raw)
{
    if (raw.bits > 8)
        return raw.coloursUsed;
    const std::int64_t most = std::int64_t{1} << raw.bits;
    return raw.coloursUsed == 0 ? most : raw.coloursUsed;
}

void readPalette(OctetReader &file, const RawHeader &raw, BmpHeader &header)
{
    const qint64 begin = file.position();
    const qint64 entry = raw.headerSize == coreHeader ? 3 : 4;
    const qint64 computedEnd = begin + coloursInFile(raw) * entry;
    // What the file header says is believed where it can be: palettes may be longer than said, or shorter.
    const bool isPlausible = raw.pixelsAt >= begin && raw.pixelsAt < file.size();
    header.pixelsAt = isPlausible ? raw.pixelsAt : computedEnd;
    if (raw.bits > 8)
        return;
    const qint64 room = isPlausible ? (raw.pixelsAt - begin) / entry : coloursInFile(raw);
    const auto count = std::min<qint64>({coloursInFile(raw), std::int64_t{1} << raw.bits, room});
    for (qint64 index = 0; index < count; ++index) {
        Colour colour;
        colour.blue = file.octet();
        colour.green = file.octet();
        colour.red = file.octet();
        if (entry == 4)
            file.skip(1);
        header.palette.push_back(colour);
    }
}

} // namespace

BmpHeader readBmpHeader(OctetReader &file)
{
    BmpHeader header;
    const RawHeader raw = readRaw(file, header.masks);
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (file.ended() || raw.width <= 0 || raw.width > most || raw.height == 0 || raw.height < -most)
        throw PictureFailure(pictureText("is no bitmap, or one without pixels."));
    switch (raw.bits) {
    case 1:
    case 2:
    case 4:
    case 8:
    case 16:
    case 24:
    case 32:
        break;
    default:
        throw PictureFailure(
            pictureText("is a bitmap with %1 bits per pixel, which there cannot be.").arg(raw.bits));
    }
    header.width = static_cast<int>(raw.width);
    header.height = static_cast<int>(std::abs(raw.height));
    header.topDown = raw.height < 0;
    header.bits = static_cast<int>(raw.bits);
    header.compression = compressionOf(raw);
    if (raw.resolution.isKnown())
        header.resolution = raw.resolution;
    useDefaultMasks(header, raw);
    readPalette(file, raw, header);
    return header;
}

} // namespace vandrel

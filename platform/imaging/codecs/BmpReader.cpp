#include "platform/imaging/codecs/BmpReader.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "platform/imaging/codecs/BmpHeader.h"
#include "platform/imaging/codecs/BmpRle.h"
#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"

namespace vandrel {

namespace {

/// One colour's bits in a pixel of 16 or 32.
class BitField
{
public:
    explicit BitField(std::uint32_t mask)
        : m_mask(mask), m_shift(mask == 0 ? 0 : std::countr_zero(mask)), m_most(mask >> m_shift)
    { }

    bool isPresent() const { return m_mask != 0; }
    std::uint8_t level(std::uint32_t pixel) const
    {
        if (m_most == 0)
            return 0;
        const std::uint64_t value = (pixel & m_mask) >> m_shift;
        return static_cast<std::uint8_t>((value * 255 + m_most / 2) / m_most);
    }

private:
    std::uint32_t m_mask;
    int m_shift;
    std::uint64_t m_most;
};

/// Turns rows as they stand in the file into pixels.
class RowDecoder
{
public:
    explicit RowDecoder(const BmpHeader &header)
        : m_header(header), m_red(header.masks[0]), m_green(header.masks[1]), m_blue(header.masks[2]),
          m_alpha(header.masks[3])
    {
        m_isPlain32 = header.masks == std::array<std::uint32_t, 4>{0xFF0000, 0x00FF00, 0x0000FF, 0};
    }

    void decode(const std::uint8_t *from, std::uint8_t *to) const
    {
        const int width = m_header.width;
        if (m_header.bits <= 8)
            unpackRow(from, m_header.bits, width, to);
        else if (m_header.bits == 24)
            std::copy_n(from, static_cast<std::ptrdiff_t>(width) * 3, to);
        else if (m_header.bits == 16)
            decode16(from, width, to);
        else if (m_isPlain32)
            copy32(from, width, to);
        else
            decode32(from, width, to);
    }

private:
    void decode16(const std::uint8_t *from, int width, std::uint8_t *to) const
    {
        for (int x = 0; x < width; ++x, from += 2, to += 3) {
            const auto pixel = static_cast<std::uint32_t>(from[0] | from[1] << 8);
            to[0] = onFiveBits(m_blue.level(pixel));
            to[1] = onFiveBits(m_green.level(pixel));
            to[2] = onFiveBits(m_red.level(pixel));
        }
    }

    static void copy32(const std::uint8_t *from, int width, std::uint8_t *to)
    {
        for (int x = 0; x < width; ++x, from += 4, to += 4) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
            to[3] = 255;
        }
    }

    void decode32(const std::uint8_t *from, int width, std::uint8_t *to) const
    {
        for (int x = 0; x < width; ++x, from += 4, to += 4) {
            const std::uint32_t pixel = static_cast<std::uint32_t>(from[0])
                | static_cast<std::uint32_t>(from[1]) << 8 | static_cast<std::uint32_t>(from[2]) << 16
                | static_cast<std::uint32_t>(from[3]) << 24;
            to[0] = m_blue.level(pixel);
            to[1] = m_green.level(pixel);
            to[2] = m_red.level(pixel);
            to[3] = m_alpha.isPresent() ? m_alpha.level(pixel) : 255;
        }
    }

    const BmpHeader &m_header;
    BitField m_red;
    BitField m_green;
    BitField m_blue;
    BitField m_alpha;
    bool m_isPlain32;
};

/// A file whose alpha is zero everywhere means none.
void makeOpaqueIfInvisible(const PixelView &view)
{
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            if (view.at(x, y)[3] != 0)
                return;
        }
    }
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x)
            view.at(x, y)[3] = 255;
    }
}

/// Reads the rows of a bitmap without compression; gives how many were there.
int readRows(OctetReader &file,
             const BmpHeader &header,
             const PixelView &pixels,
             const DecodeRequest &request)
{
    const qint64 length = (static_cast<qint64>(header.width) * header.bits + 31) / 32 * 4;
    std::vector<std::uint8_t> row(static_cast<std::size_t>(length));
    const RowDecoder decoder(header);
    for (int done = 0; done < header.height; ++done) {
        atRow(request, done, header.height);
        const bool isWhole = file.read(row.data(), length);
        const int y = header.topDown ? done : header.height - 1 - done;
        // The last row's filling may be missing without harm.
        if (!isWhole && file.left() <= 0 && done < header.height - 1)
            return done;
        decoder.decode(row.data(), pixels.row(y));
    }
    return header.height;
}

int depthOf(const BmpHeader &header)
{
    return header.bits == 2 ? 4 : header.bits;
}

std::int64_t mostPerOctet(const BmpHeader &header)
{
    // Two octets of a compressed bitmap can say 255 pixels; one octet of another holds eight at most. Sixteen times as
    // much is no longer a file that lost its end.
    return (header.compression == BmpCompression::None ? 8 : 128) * 16;
}

} // namespace

DecodedPicture readBmp(QIODevice &device, const DecodeRequest &request)
{
    OctetReader file(device);
    const BmpHeader header = readBmpHeader(file);
    const int depth = depthOf(header);
    file.seek(header.pixelsAt);
    if (file.left() <= 0)
        throw PictureFailure(pictureText("ends before its first pixel."));
    const auto pixels = pixelsForClaim(header.width, header.height, channelsOfDepth(depth), file.left(),
                                       mostPerOctet(header));
    DecodedPicture decoded;
    if (header.compression == BmpCompression::None) {
        const int rows = readRows(file, header, pixels->view(), request);
        if (rows == 0)
            throw PictureFailure(pictureText("ends within its first row of pixels."));
        if (rows < header.height)
            decoded.damage = endsEarly(rows, header.height);
    } else if (!readBmpRle(file, header.compression == BmpCompression::Rle4, pixels->view(), request)) {
        decoded.damage = pictureText("Some of the compressed pixels are damaged.");
    }
    if (depth == 32)
        makeOpaqueIfInvisible(pixels->view());
    if (!header.topDown && header.compression != BmpCompression::None)
        reverseRows(pixels->view());
    decoded.picture = Raster(pixels, depth, header.palette, header.resolution);
    return decoded;
}

} // namespace vandrel

#include "platform/imaging/codecs/PcxReader.h"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/imaging/codecs/OctetReader.h"
#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"

namespace vandrel {

namespace {

constexpr qint64 headerLength = 128;
/// The mark before the palette of 256 colours, and that.
constexpr qint64 largePaletteLength = 769;
constexpr int largePaletteMark = 0x0C;

struct PcxHeader {
    int version = 0;
    bool isCompressed = false;
    int bits = 0;
    int planes = 0;
    int width = 0;
    int height = 0;
    int octetsPerLine = 0;
    Resolution resolution;
    std::array<Colour, 16> colours{};
};

PcxHeader readHeader(OctetReader &file)
{
    PcxHeader header;
    file.skip(1);
    header.version = file.octet();
    header.isCompressed = file.octet() == 1;
    header.bits = file.octet();
    const int left = file.u16();
    const int top = file.u16();
    header.width = file.u16() - left + 1;
    header.height = file.u16() - top + 1;
    header.resolution.horizontal = file.u16();
    header.resolution.vertical = file.u16();
    for (Colour &colour : header.colours) {
        colour.red = file.octet();
        colour.green = file.octet();
        colour.blue = file.octet();
    }
    file.skip(1);
    header.planes = file.octet();
    header.octetsPerLine = file.u16();
    return header;
}

/// The depth in memory; 0 for planes and bits that do not go together.
int depthOf(const PcxHeader &header)
{
    if (header.planes == 1) {
        switch (header.bits) {
        case 1:
        case 4:
        case 8:
            return header.bits;
        case 2:
            return 4;
        default:
            return 0;
        }
    }
    if (header.bits == 1 && header.planes >= 2 && header.planes <= 4)
        return 4;
    if (header.bits == 8 && (header.planes == 3 || header.planes == 4))
        return header.planes * 8;
    return 0;
}

/// Reads the octets of rows; a run may go on in the next row.
class LineReader
{
public:
    LineReader(OctetReader &file, bool isCompressed) : m_file(file), m_isCompressed(isCompressed) { }

    /// False where the file ends before the line does.
    bool read(std::vector<std::uint8_t> &line)
    {
        if (!m_isCompressed)
            return m_file.read(line.data(), static_cast<qint64>(line.size()));
        for (std::uint8_t &octet : line) {
            if (m_left == 0)
                startRun();
            octet = m_value;
            --m_left;
        }
        return !m_file.ended();
    }

private:
    void startRun()
    {
        m_value = m_file.octet();
        m_left = 1;
        if (m_value < 0xC0)
            return;
        // A run of none is one that an odd writer left; the octet behind it counts once.
        m_left = std::max(1, m_value & 0x3F);
        m_value = m_file.octet();
    }

    OctetReader &m_file;
    bool m_isCompressed;
    int m_left = 0;
    std::uint8_t m_value = 0;
};

/// The colours that files without a palette of their own count on.
Palette earlyColours()
{
    Palette palette;
    for (int number = 0; number < 16; ++number) {
        const int base = number & 8 ? 85 : 0;
        const auto level
            = [&](int bit) { return static_cast<std::uint8_t>(base + (number & bit ? 170 : 0)); };
        palette.push_back({level(4), level(2), level(1)});
    }
    palette[6].green = 85;
    return palette;
}

Palette smallPalette(const PcxHeader &header)
{
    const Palette fromHeader(header.colours.begin(), header.colours.end());
    const bool isBlank = std::all_of(fromHeader.begin(), fromHeader.end(),
                                     [&](Colour colour) { return colour == fromHeader.front(); });
    if (header.bits == 1 && header.planes == 1) {
        // Most writers leave the palette of black and white pictures as it happens to be.
        const bool isUsed = header.version >= 2 && header.version != 3 && fromHeader[0] != fromHeader[1];
        return isUsed ? Palette{fromHeader[0], fromHeader[1]} : Palette{{0, 0, 0}, {255, 255, 255}};
    }
    return header.version == 3 || isBlank ? earlyColours() : fromHeader;
}

Palette largePalette(OctetReader &file)
{
    file.seek(file.size() - largePaletteLength);
    if (file.size() < headerLength + largePaletteLength || file.octet() != largePaletteMark)
        return grayPalette(256);
    Palette palette(256);
    for (Colour &colour : palette) {
        colour.red = file.octet();
        colour.green = file.octet();
        colour.blue = file.octet();
    }
    return palette;
}

/// Takes one line apart into pixels.
class LineDecoder
{
public:
    explicit LineDecoder(const PcxHeader &header)
        : m_header(header), m_plane(static_cast<std::size_t>(header.width)),
          // As many octets as the pixels need, even where the file says fewer.
          m_padded(static_cast<std::size_t>(
              std::max<std::int64_t>(header.octetsPerLine, packedLength(header.width, header.bits))))
    { }

    void decode(const std::vector<std::uint8_t> &line, std::uint8_t *to)
    {
        for (int plane = 0; plane < m_header.planes; ++plane) {
            const auto begin = line.begin() + static_cast<std::ptrdiff_t>(plane) * m_header.octetsPerLine;
            std::copy_n(begin, m_header.octetsPerLine, m_padded.begin());
            unpackRow(m_padded.data(), m_header.bits, m_header.width, m_plane.data());
            put(plane, to);
        }
    }

private:
    void put(int plane, std::uint8_t *to) const
    {
        if (m_header.planes == 1) {
            std::copy(m_plane.begin(), m_plane.end(), to);
        } else if (m_header.bits == 1) {
            for (std::size_t x = 0; x < m_plane.size(); ++x) {
                const int before = plane == 0 ? 0 : to[x];
                to[x] = static_cast<std::uint8_t>(before | m_plane[x] << plane);
            }
        } else {
            // Red comes first in the file and last in memory.
            const std::size_t place = plane < 3 ? static_cast<std::size_t>(2 - plane) : 3;
            const auto octets = static_cast<std::size_t>(m_header.planes);
            for (std::size_t x = 0; x < m_plane.size(); ++x)
                to[x * octets + place] = m_plane[x];
        }
    }

    const PcxHeader &m_header;
    std::vector<std::uint8_t> m_plane;
    std::vector<std::uint8_t> m_padded;
};

} // namespace

DecodedPicture readPcx(QIODevice &device, const DecodeRequest &request)
{
    OctetReader file(device);
    const PcxHeader header = readHeader(file);
    const int depth = depthOf(header);
    if (header.version > 5 || depth == 0 || header.octetsPerLine == 0)
        throw PictureFailure(pictureText("is a PCX file of a kind that cannot be read."));
    if (file.size() <= headerLength)
        throw PictureFailure(pictureText("ends before its first pixel."));
    // A run of 63 octets of eight pixels each takes two, and sixteen times as much is no longer honest.
    constexpr std::int64_t mostPerOctet = 63 * 8 / 2 * 16;
    const auto pixels
        = pixelsForClaim(header.width, header.height, channelsOfDepth(depth), file.size(), mostPerOctet);
    DecodedPicture decoded;
    file.seek(headerLength);
    LineReader reader(file, header.isCompressed);
    LineDecoder decoder(header);
    std::vector<std::uint8_t> line(static_cast<std::size_t>(header.octetsPerLine)
                                   * static_cast<std::size_t>(header.planes));
    for (int y = 0; y < header.height; ++y) {
        atRow(request, y, header.height);
        const bool isWhole = reader.read(line);
        decoder.decode(line, pixels->view().row(y));
        if (!isWhole) {
            decoded.damage = endsEarly(y, header.height);
            break;
        }
    }
    Palette palette;
    if (depth <= 8)
        palette = depth == 8 ? largePalette(file) : smallPalette(header);
    decoded.picture = Raster(pixels, depth, std::move(palette), header.resolution);
    return decoded;
}

} // namespace vandrel

#include "platform/imaging/codecs/PcxWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/imaging/codecs/Encoding.h"
#include "platform/imaging/codecs/PackedRows.h"

namespace vandrel {

namespace {

struct PcxLayout {
    int bits;
    int planes;
    int octetsPerLine;
    /// Whether pixels of one bit are written the other way round.
    bool isInverted;
};

/// Most readers know one bit as black and white alone, whatever palette is there.
bool isWhiteAndBlack(const Palette &palette)
{
    return palette == Palette{{255, 255, 255}, {0, 0, 0}};
}

bool isMonochrome(const Raster &picture)
{
    return picture.bitsPerPixel() == 1
        && (isWhiteAndBlack(picture.palette()) || picture.palette() == Palette{{0, 0, 0}, {255, 255, 255}});
}

PcxLayout pcxLayoutOf(const Raster &picture)
{
    const int bits = picture.bitsPerPixel() <= 4 ? 1 : 8;
    const bool isSixteenColours = picture.bitsPerPixel() <= 4 && !isMonochrome(picture);
    const int planes = isSixteenColours ? 4 : picture.isIndexed() ? 1 : 3;
    // Lines have even lengths.
    const auto length = static_cast<int>(packedLength(picture.width(), bits));
    return {bits, planes, length + length % 2, isMonochrome(picture) && isWhiteAndBlack(picture.palette())};
}

std::uint32_t dotsPerInch(double resolution)
{
    return resolution > 0 ? static_cast<std::uint32_t>(std::clamp(std::round(resolution), 1.0, 65535.0)) : 72;
}

void writeHeader(OctetWriter &out, const Raster &picture, const PcxLayout &layout)
{
    out.octet(0x0A);
    out.octet(5);
    out.octet(1);
    out.octet(layout.bits);
    out.u16(0);
    out.u16(0);
    out.u16(static_cast<std::uint32_t>(picture.width() - 1));
    out.u16(static_cast<std::uint32_t>(picture.height() - 1));
    out.u16(dotsPerInch(picture.resolution().horizontal));
    out.u16(dotsPerInch(picture.resolution().vertical));
    Palette colours = layout.isInverted ? Palette{{0, 0, 0}, {255, 255, 255}} : picture.palette();
    colours.resize(16);
    for (const Colour colour : colours) {
        out.octet(colour.red);
        out.octet(colour.green);
        out.octet(colour.blue);
    }
    out.octet(0);
    out.octet(layout.planes);
    out.u16(static_cast<std::uint32_t>(layout.octetsPerLine));
    out.u16(1);
    out.fill(0, 58);
}

/// Runs of at most 63; they end with the line, since some readers begin each one anew. Returns where the runs end: they
/// take at most twice the line.
std::uint8_t *putRuns(const Octets &line, std::uint8_t *to)
{
    constexpr std::ptrdiff_t longest = 63;
    const std::uint8_t *end = line.data() + line.size();
    for (const std::uint8_t *from = line.data(); from != end;) {
        const std::uint8_t value = *from;
        const std::uint8_t *stop = from + std::min(longest, end - from);
        const std::uint8_t *next = from + 1;
        while (next != stop && *next == value)
            ++next;
        // The count is written over where the octet can stand alone, as no branch foresees that in a photograph.
        *to = static_cast<std::uint8_t>(0xC0 | (next - from));
        to += (next - from > 1) | (value >= 0xC0);
        *to++ = value;
        from = next;
    }
    return to;
}

/// One plane of a row, one value an octet.
void takePlane(
    const Raster &picture, const PcxLayout &layout, const std::uint8_t *row, int plane, Octets &values)
{
    const std::size_t channels = static_cast<std::size_t>(picture.view().channels);
    const auto count = static_cast<std::ptrdiff_t>(values.size());
    if (layout.isInverted)
        std::transform(row, row + count, values.begin(), [](int number) { return number ^ 1; });
    else if (layout.planes == 4)
        std::transform(row, row + count, values.begin(), [plane](int number) { return number >> plane & 1; });
    else if (picture.isIndexed())
        std::copy_n(row, count, values.begin());
    else
        for (std::size_t x = 0; x < values.size(); ++x)
            values[x] = row[x * channels + static_cast<std::size_t>(2 - plane)];
}

Octets runsOf(const Raster &picture, const PcxLayout &layout, int first, int end)
{
    Octets values(static_cast<std::size_t>(picture.width()));
    Octets line(static_cast<std::size_t>(layout.octetsPerLine));
    Octets runs(static_cast<std::size_t>(end - first) * static_cast<std::size_t>(layout.planes) * line.size()
                * 2);
    std::uint8_t *to = runs.data();
    for (int y = first; y < end; ++y) {
        for (int plane = 0; plane < layout.planes; ++plane) {
            takePlane(picture, layout, picture.view().row(y), plane, values);
            packRow(values.data(), layout.bits, picture.width(), line.data());
            to = putRuns(line, to);
        }
    }
    runs.resize(static_cast<std::size_t>(to - runs.data()));
    return runs;
}

} // namespace

void writePcx(const Raster &picture, QIODevice &device, const FileProgress &progress)
{
    OctetWriter out(device);
    const PcxLayout layout = pcxLayoutOf(picture);
    writeHeader(out, picture, layout);
    writeBands(
        picture.width(), picture.height(),
        [&](int first, int end) { return runsOf(picture, layout, first, end); }, out, progress);
    if (picture.bitsPerPixel() != 8)
        return;
    out.octet(0x0C);
    for (const Colour colour : picture.palette()) {
        out.octet(colour.red);
        out.octet(colour.green);
        out.octet(colour.blue);
    }
}

} // namespace vandrel

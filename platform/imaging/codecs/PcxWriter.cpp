#include "platform/imaging/codecs/PcxWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/imaging/codecs/OctetWriter.h"
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

PcxLayout layoutOf(const Raster &picture)
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

/// Runs of at most 63; they end with the line, since some readers begin each one anew.
void writeRuns(OctetWriter &out, const std::vector<std::uint8_t> &line)
{
    for (std::size_t at = 0; at < line.size();) {
        std::size_t count = 1;
        while (count < 63 && at + count < line.size() && line[at + count] == line[at])
            ++count;
        if (count > 1 || line[at] >= 0xC0)
            out.octet(static_cast<int>(0xC0 | count));
        out.octet(line[at]);
        at += count;
    }
}

/// One plane of a row, one value an octet.
void takePlane(const Raster &picture,
               const PcxLayout &layout,
               const std::uint8_t *row,
               int plane,
               std::vector<std::uint8_t> &values)
{
    const int channels = picture.view().channels;
    for (std::size_t x = 0; x < values.size(); ++x, row += channels) {
        if (layout.isInverted)
            values[x] = *row ^ 1;
        else if (picture.isIndexed())
            values[x] = layout.planes == 4 ? static_cast<std::uint8_t>(*row >> plane & 1) : *row;
        else
            values[x] = row[2 - plane];
    }
}

} // namespace

void writePcx(const Raster &picture, QIODevice &device)
{
    OctetWriter out(device);
    const PcxLayout layout = layoutOf(picture);
    writeHeader(out, picture, layout);
    std::vector<std::uint8_t> values(static_cast<std::size_t>(picture.width()));
    std::vector<std::uint8_t> line(static_cast<std::size_t>(layout.octetsPerLine));
    for (int y = 0; y < picture.height(); ++y) {
        for (int plane = 0; plane < layout.planes; ++plane) {
            takePlane(picture, layout, picture.view().row(y), plane, values);
            packRow(values.data(), layout.bits, picture.width(), line.data());
            writeRuns(out, line);
        }
    }
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

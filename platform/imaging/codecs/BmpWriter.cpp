#include "platform/imaging/codecs/BmpWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/imaging/codecs/Encoding.h"
#include "platform/imaging/codecs/PackedRows.h"

namespace vandrel {

namespace {

constexpr std::uint32_t fileHeader = 14;
constexpr std::uint32_t plainHeader = 40;
constexpr std::uint32_t alphaHeader = 108;

std::uint32_t perMetre(double perInch)
{
    return static_cast<std::uint32_t>(std::clamp(std::round(perInch / 0.0254), 0.0, 2e9));
}

bool hasAlpha(const Raster &picture)
{
    if (picture.bitsPerPixel() != 32)
        return false;
    const ConstPixelView view = picture.view();
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t *row = view.row(y);
        for (int x = 0; x < view.width; ++x) {
            if (row[x * 4 + 3] != 255)
                return true;
        }
    }
    return false;
}

/// Sizes that several fields follow from.
struct Layout {
    bool alpha;
    std::uint32_t header;
    std::uint32_t palette;
    std::uint32_t rowLength;
};

Layout layoutOf(const Raster &picture)
{
    const bool alpha = hasAlpha(picture);
    return {alpha, alpha ? alphaHeader : plainHeader,
            static_cast<std::uint32_t>(picture.palette().size() * 4),
            (static_cast<std::uint32_t>(picture.width()) * static_cast<std::uint32_t>(picture.bitsPerPixel())
             + 31)
                / 32 * 4};
}

void writeFileHeader(OctetWriter &out, const Layout &layout, std::uint32_t pixels)
{
    const std::uint32_t begin = fileHeader + layout.header + layout.palette;
    out.octet('B');
    out.octet('M');
    // A size that the field cannot hold is left out, as readers go by the picture's own.
    out.u32(pixels > 0xFFFFFFFFU - begin ? 0 : begin + pixels);
    out.u32(0);
    out.u32(begin);
}

void writeHeader(OctetWriter &out, const Raster &picture, const Layout &layout, std::uint32_t pixels)
{
    out.u32(layout.header);
    out.u32(static_cast<std::uint32_t>(picture.width()));
    out.u32(static_cast<std::uint32_t>(picture.height()));
    out.u16(1);
    out.u16(static_cast<std::uint32_t>(picture.bitsPerPixel()));
    out.u32(layout.alpha ? 3 : 0);
    out.u32(pixels);
    out.u32(perMetre(picture.resolution().horizontal));
    out.u32(perMetre(picture.resolution().vertical));
    out.u32(static_cast<std::uint32_t>(picture.palette().size()));
    out.u32(0);
    if (!layout.alpha)
        return;
    for (const std::uint32_t mask : {0x00FF0000U, 0x0000FF00U, 0x000000FFU, 0xFF000000U})
        out.u32(mask);
    // The mark of the usual colour space, whose further fields then mean nothing.
    out.u32(0x73524742);
    out.fill(0, 36 + 12);
}

void pack16(const std::uint8_t *from, int width, std::uint8_t *to)
{
    for (int x = 0; x < width; ++x, from += 3, to += 2) {
        const int pixel = from[2] >> 3 << 10 | from[1] >> 3 << 5 | from[0] >> 3;
        to[0] = static_cast<std::uint8_t>(pixel & 255);
        to[1] = static_cast<std::uint8_t>(pixel >> 8);
    }
}

void writeRows(OctetWriter &out, const Raster &picture, const Layout &layout, const FileProgress &progress)
{
    const ConstPixelView view = picture.view();
    std::vector<std::uint8_t> row(layout.rowLength);
    for (int y = view.height - 1; y >= 0; --y) {
        if (picture.isIndexed())
            packRow(view.row(y), picture.bitsPerPixel(), view.width, row.data());
        else if (picture.bitsPerPixel() == 16)
            pack16(view.row(y), view.width, row.data());
        else
            std::copy_n(view.row(y), static_cast<std::ptrdiff_t>(view.width) * view.channels, row.data());
        out.write(row.data(), layout.rowLength);
        if (y % 64 == 0)
            reportProgress(progress, view.height - y, view.height);
    }
}

} // namespace

void writeBmp(const Raster &picture, bool withFileHeader, QIODevice &device, const FileProgress &progress)
{
    const Layout layout = layoutOf(picture);
    const std::uint32_t pixels = layout.rowLength * static_cast<std::uint32_t>(picture.height());
    OctetWriter out(device);
    if (withFileHeader)
        writeFileHeader(out, layout, pixels);
    writeHeader(out, picture, layout, pixels);
    for (const Colour colour : picture.palette()) {
        out.octet(colour.blue);
        out.octet(colour.green);
        out.octet(colour.red);
        out.octet(0);
    }
    writeRows(out, picture, layout, progress);
}

} // namespace vandrel

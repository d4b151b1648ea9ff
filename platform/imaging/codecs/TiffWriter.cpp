#include "platform/imaging/codecs/TiffWriter.h"

#include <algorithm>
#include <array>
#include <vector>

#include <QBuffer>
#include <QCoreApplication>

#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PiecesInOrder.h"
#include "platform/imaging/codecs/TiffLibrary.h"

namespace vandrel {

namespace {

bool isGrayScale(const Palette &palette)
{
    return palette == grayPalette(static_cast<int>(palette.size()));
}

std::uint16_t photometricOf(const Raster &picture)
{
    if (!picture.isIndexed())
        return PHOTOMETRIC_RGB;
    if (isGrayScale(picture.palette()))
        return PHOTOMETRIC_MINISBLACK;
    const Palette &palette = picture.palette();
    const bool isWhiteAndBlack
        = palette.size() == 2 && palette[0] == Colour{255, 255, 255} && palette[1] == Colour{0, 0, 0};
    return isWhiteAndBlack ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_PALETTE;
}

void setColourMap(TIFF *tiff, const Palette &palette)
{
    std::vector<std::uint16_t> red;
    std::vector<std::uint16_t> green;
    std::vector<std::uint16_t> blue;
    // The table has sixteen bits: 255 becomes 65535.
    constexpr int widen = 257;
    for (const Colour colour : palette) {
        red.push_back(static_cast<std::uint16_t>(colour.red * widen));
        green.push_back(static_cast<std::uint16_t>(colour.green * widen));
        blue.push_back(static_cast<std::uint16_t>(colour.blue * widen));
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
}

/// The tags for so many of its rows.
void setTags(TIFF *tiff, const Raster &picture, int rows, int rowsOfStrip)
{
    const int channels = picture.view().channels;
    const std::uint16_t photometric = photometricOf(picture);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(rows));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.isIndexed() ? picture.bitsPerPixel() : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (channels == 4) {
        std::array<std::uint16_t, 1> kinds{EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, kinds.data());
    }
    if (photometric == PHOTOMETRIC_PALETTE)
        setColourMap(tiff, picture.palette());
    const bool isFax = picture.bitsPerPixel() == 1 && photometric != PHOTOMETRIC_PALETTE;
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, isFax ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW);
    if (picture.bitsPerPixel() >= 8)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rowsOfStrip));
    const Resolution resolution = picture.resolution();
    if (resolution.isKnown()) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, resolution.horizontal);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, resolution.vertical);
    }
}

/// One row in the file's order of colours.
void fillRow(const Raster &picture, int y, std::uint8_t *to)
{
    const ConstPixelView view = picture.view();
    const std::uint8_t *from = view.row(y);
    if (picture.isIndexed()) {
        packRow(from, picture.bitsPerPixel(), view.width, to);
        return;
    }
    for (int x = 0; x < view.width; ++x, from += view.channels, to += view.channels) {
        to[0] = from[2];
        to[1] = from[1];
        to[2] = from[0];
        if (view.channels == 4)
            to[3] = from[3];
    }
}

void require(bool done, const TiffComplaints &complaints)
{
    if (!done)
        throw PictureFailure(QCoreApplication::translate("PictureFiles", "cannot be written as TIFF: %1.")
                                 .arg(complaints.first));
}

/// A strip as it stands in the file.
struct Strip {
    QByteArray file;
    qsizetype begin = 0;
    qsizetype length = 0;
};

/// Compresses rows as the only strip of a file in memory, since the library compresses nothing outside of a file.
Strip compressedRows(const Raster &picture, int first, int end)
{
    Strip strip;
    QBuffer device;
    device.open(QIODevice::ReadWrite);
    TiffComplaints complaints;
    const TiffHandle tiff = openTiff(device, "w", complaints);
    require(tiff != nullptr, complaints);
    setTags(tiff.get(), picture, end - first, end - first);
    const auto length = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
    std::vector<std::uint8_t> rows(length * static_cast<std::size_t>(end - first));
    for (int y = first; y < end; ++y)
        fillRow(picture, y, &rows[length * static_cast<std::size_t>(y - first)]);
    const auto octets = static_cast<tmsize_t>(rows.size());
    require(TIFFWriteEncodedStrip(tiff.get(), 0, rows.data(), octets) == octets, complaints);
    strip.begin = static_cast<qsizetype>(TIFFGetStrileOffset(tiff.get(), 0));
    strip.length = static_cast<qsizetype>(TIFFGetStrileByteCount(tiff.get(), 0));
    strip.file = device.data();
    return strip;
}

/// Strips large enough that the compression learns the picture, and small enough for any reader's memory.
int rowsOfStrip(const Raster &picture)
{
    constexpr std::int64_t octets = 256 * 1024;
    const std::int64_t row = packedLength(
        picture.width(), picture.isIndexed() ? picture.bitsPerPixel() : picture.view().channels * 8);
    return static_cast<int>(std::clamp<std::int64_t>(octets / row, 1, picture.height()));
}

} // namespace

void writeTiff(const Raster &picture, QIODevice &device, const FileProgress &progress)
{
    TiffComplaints complaints;
    const TiffHandle tiff = openTiff(device, "w", complaints);
    require(tiff != nullptr, complaints);
    const int rows = rowsOfStrip(picture);
    setTags(tiff.get(), picture, picture.height(), rows);
    const int strips = (picture.height() + rows - 1) / rows;
    int written = 0;
    inOrder<Strip>(
        strips,
        [&](int strip) {
            return compressedRows(picture, strip * rows, std::min(strip * rows + rows, picture.height()));
        },
        [&](Strip strip) {
            const bool isWritten = TIFFWriteRawStrip(tiff.get(), static_cast<std::uint32_t>(written),
                                                     strip.file.data() + strip.begin, strip.length)
                == strip.length;
            require(isWritten, complaints);
            ++written;
            reportProgress(progress, written, strips);
        });
    require(TIFFFlush(tiff.get()) == 1, complaints);
}

} // namespace vandrel

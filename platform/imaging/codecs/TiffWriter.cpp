#include "platform/imaging/codecs/TiffWriter.h"

#include <algorithm>
#include <array>
#include <vector>

#include <QCoreApplication>

#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"
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

void setTags(TIFF *tiff, const Raster &picture)
{
    const int channels = picture.view().channels;
    const std::uint16_t photometric = photometricOf(picture);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(picture.width()));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(picture.height()));
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
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    const Resolution resolution = picture.resolution();
    if (resolution.isKnown()) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, resolution.horizontal);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, resolution.vertical);
    }
}

/// One row in the file's order of colours; the library may write over it.
void fillRow(const Raster &picture, int y, std::vector<std::uint8_t> &row)
{
    const ConstPixelView view = picture.view();
    const std::uint8_t *from = view.row(y);
    if (picture.isIndexed()) {
        packRow(from, picture.bitsPerPixel(), view.width, row.data());
        return;
    }
    std::uint8_t *to = row.data();
    for (int x = 0; x < view.width; ++x, from += view.channels, to += view.channels) {
        to[0] = from[2];
        to[1] = from[1];
        to[2] = from[0];
        if (view.channels == 4)
            to[3] = from[3];
    }
}

} // namespace

void writeTiff(const Raster &picture, QIODevice &device)
{
    TiffComplaints complaints;
    const TiffHandle tiff = openTiff(device, "w", complaints);
    const auto fail = [&complaints] {
        throw PictureFailure(QCoreApplication::translate("PictureFiles", "cannot be written as TIFF: %1.")
                                 .arg(complaints.first));
    };
    if (!tiff)
        fail();
    setTags(tiff.get(), picture);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())));
    for (int y = 0; y < picture.height(); ++y) {
        fillRow(picture, y, row);
        if (TIFFWriteScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y), 0) != 1)
            fail();
    }
    if (TIFFFlush(tiff.get()) != 1)
        fail();
}

} // namespace vandrel

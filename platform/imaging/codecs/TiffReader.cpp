#include "platform/imaging/codecs/TiffReader.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "platform/imaging/codecs/ColourProfile.h"
#include "platform/imaging/codecs/ExifOrientation.h"
#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/TiffLibrary.h"
#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

namespace {

constexpr double centimetresPerInch = 2.54;

/// The tags that say how the pixels are stored.
struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    std::uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    std::uint16_t planar = PLANARCONFIG_CONTIG;
    std::uint16_t orientation = ORIENTATION_TOPLEFT;
    std::uint16_t format = SAMPLEFORMAT_UINT;
    bool hasAlpha = false;
    /// Whether colours are stored as they are, and not dimmed by alpha.
    bool isAlphaApart = false;
    Resolution resolution;
};

Resolution resolutionOf(TIFF *tiff)
{
    float horizontal = 0;
    float vertical = 0;
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &horizontal);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &vertical);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    const double factor = unit == RESUNIT_CENTIMETER ? centimetresPerInch : unit == RESUNIT_INCH ? 1 : 0;
    const bool isSound = std::isfinite(horizontal) && std::isfinite(vertical);
    return isSound ? Resolution{horizontal * factor, vertical * factor} : Resolution{};
}

TiffLayout layoutOf(TIFF *tiff)
{
    TiffLayout layout;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &layout.orientation);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &layout.format);
    if (!TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &layout.photometric))
        layout.photometric = layout.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    std::uint16_t extras = 0;
    std::uint16_t *kinds = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds) && extras > 0)
        layout.hasAlpha = kinds[0] == EXTRASAMPLE_ASSOCALPHA || kinds[0] == EXTRASAMPLE_UNASSALPHA;
    layout.isAlphaApart = layout.hasAlpha && kinds[0] == EXTRASAMPLE_UNASSALPHA;
    if (layout.orientation < ORIENTATION_TOPLEFT || layout.orientation > ORIENTATION_LEFTBOT)
        layout.orientation = ORIENTATION_TOPLEFT;
    layout.resolution = resolutionOf(tiff);
    return layout;
}

/// Whether rows are read as they stand, without the library's conversion.
bool isPlain(TIFF *tiff, const TiffLayout &layout)
{
    if (TIFFIsTiled(tiff) || layout.planar != PLANARCONFIG_CONTIG || layout.format != SAMPLEFORMAT_UINT)
        return false;
    const bool isGray
        = layout.photometric == PHOTOMETRIC_MINISBLACK || layout.photometric == PHOTOMETRIC_MINISWHITE;
    if (layout.samples == 1 && (isGray || layout.photometric == PHOTOMETRIC_PALETTE))
        return layout.bits == 1 || layout.bits == 2 || layout.bits == 4 || layout.bits == 8;
    if (layout.photometric != PHOTOMETRIC_RGB || layout.bits != 8)
        return false;
    return layout.samples == 3 || (layout.samples == 4 && layout.isAlphaApart);
}

Palette paletteOf(TIFF *tiff, const TiffLayout &layout)
{
    const int count = 1 << layout.bits;
    if (layout.photometric != PHOTOMETRIC_PALETTE) {
        Palette grays = grayPalette(count);
        if (layout.photometric == PHOTOMETRIC_MINISWHITE)
            std::reverse(grays.begin(), grays.end());
        return grays;
    }
    std::uint16_t *red = nullptr;
    std::uint16_t *green = nullptr;
    std::uint16_t *blue = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue))
        return grayPalette(count);
    // Some writers filled the sixteen bits of the table with values of eight.
    const bool isNarrow = std::all_of(red, red + count, [](auto level) { return level < 256; })
        && std::all_of(green, green + count, [](auto level) { return level < 256; })
        && std::all_of(blue, blue + count, [](auto level) { return level < 256; });
    const int shift = isNarrow ? 0 : 8;
    Palette palette;
    for (int number = 0; number < count; ++number)
        palette.push_back({static_cast<std::uint8_t>(red[number] >> shift),
                           static_cast<std::uint8_t>(green[number] >> shift),
                           static_cast<std::uint8_t>(blue[number] >> shift)});
    return palette;
}

std::unique_ptr<ColourProfile> profileOf(TIFF *tiff, ProfiledPixels pixels)
{
    std::uint32_t length = 0;
    void *octets = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &length, &octets) || octets == nullptr)
        return nullptr;
    return ColourProfile::make({static_cast<const char *>(octets), static_cast<qsizetype>(length)}, pixels);
}

void swapRedAndBlue(std::uint8_t *row, int width, int channels)
{
    for (int x = 0; x < width; ++x, row += channels)
        std::swap(row[0], row[2]);
}

/// Reads rows as they stand.
DecodedPicture
readPlain(TIFF *tiff, const TiffLayout &layout, qint64 octetsInFile, const DecodeRequest &request)
{
    const bool isIndexed = layout.samples == 1;
    const int depth = !isIndexed ? layout.samples * 8 : layout.bits == 2 ? 4 : layout.bits;
    // The densest compression is that of blank pages: a few bits a row.
    constexpr std::int64_t mostPerOctet = 100'000;
    const auto pixels
        = pixelsForClaim(layout.width, layout.height, channelsOfDepth(depth), octetsInFile, mostPerOctet);
    const PixelView view = pixels->view();
    const auto profile = layout.samples != 3 || request.box ? nullptr : profileOf(tiff, ProfiledPixels::Bgr);
    const tmsize_t length = TIFFScanlineSize(tiff);
    if (length <= 0 || length > std::int64_t{layout.width} * view.channels + 8)
        throw PictureFailure(pictureText("says of itself what cannot be."));
    std::vector<std::uint8_t> row(static_cast<std::size_t>(length));
    DecodedPicture decoded;
    int rows = 0;
    for (; rows < view.height; ++rows) {
        if (rows % 64 == 0)
            checkCancelled(request);
        if (TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(rows), 0) != 1)
            break;
        if (isIndexed) {
            unpackRow(row.data(), layout.bits, view.width, view.row(rows));
            continue;
        }
        std::copy_n(row.data(), static_cast<std::ptrdiff_t>(view.width) * view.channels, view.row(rows));
        swapRedAndBlue(view.row(rows), view.width, view.channels);
        if (profile)
            profile->apply(view.row(rows), view.width, view.row(rows));
    }
    if (rows < view.height)
        decoded.damage = endsEarly(rows, view.height);
    decoded.picture
        = upright(Raster(pixels, depth, isIndexed ? paletteOf(tiff, layout) : Palette(), layout.resolution),
                  layout.orientation);
    return rows > 0 ? decoded : DecodedPicture();
}

/// From the library's red, green, blue, alpha in one number, with colours that alpha has dimmed.
void takeRow(const std::uint32_t *from, int width, bool withAlpha, std::uint8_t *to)
{
    for (int x = 0; x < width; ++x) {
        const std::uint32_t pixel = from[x];
        const std::uint32_t alpha = TIFFGetA(pixel);
        const std::uint32_t colours[3] = {TIFFGetB(pixel), TIFFGetG(pixel), TIFFGetR(pixel)};
        for (const std::uint32_t colour : colours) {
            const std::uint32_t full = withAlpha && alpha > 0 ? (colour * 255 + alpha / 2) / alpha : colour;
            *to++ = static_cast<std::uint8_t>(std::min<std::uint32_t>(full, 255));
        }
        if (withAlpha)
            *to++ = static_cast<std::uint8_t>(alpha);
    }
}

/// Whether the library's converter knows the kind, by its own account.
void checkConvertible(TIFF *tiff)
{
    char reason[1024] = {};
    if (!TIFFRGBAImageOK(tiff, reason))
        throw PictureFailure(
            pictureText("is of a kind that cannot be read: %1.").arg(QString::fromLatin1(reason)));
}

/// Lets the library convert whatever there is, which it does for the picture as a whole.
DecodedPicture readConverted(TIFF *tiff, const TiffLayout &layout, qint64 octetsInFile)
{
    checkConvertible(tiff);
    const int depth = layout.hasAlpha ? 32 : 24;
    constexpr std::int64_t mostPerOctet = 100'000;
    const auto pixels = pixelsForClaim(layout.width, layout.height, 4, octetsInFile, mostPerOctet);
    const PixelView all = pixels->view();
    auto *raster = reinterpret_cast<std::uint32_t *>(all.data);
    DecodedPicture decoded;
    const bool isWhole
        = TIFFReadRGBAImageOriented(tiff, layout.width, layout.height, raster, layout.orientation, 1) == 1;
    if (!isWhole)
        decoded.damage = pictureText("The file is damaged: parts of the picture may be missing.");
    const auto result = PixelBuffer::make(all.width, all.height, channelsOfDepth(depth));
    for (int y = 0; y < all.height; ++y)
        takeRow(raster + static_cast<std::ptrdiff_t>(y) * all.width, all.width, layout.hasAlpha,
                result->view().row(y));
    if (depth == 24 && layout.photometric == PHOTOMETRIC_RGB) {
        if (const auto profile = profileOf(tiff, ProfiledPixels::Bgr)) {
            for (int y = 0; y < all.height; ++y)
                profile->apply(result->view().row(y), all.width, result->view().row(y));
        }
    }
    const Raster picture(result, depth, {}, layout.resolution);
    // Asked for the picture's own orientation, the library leaves the rows as they are stored.
    decoded.picture = upright(picture, layout.orientation);
    return decoded;
}

} // namespace

DecodedPicture readTiff(QIODevice &device, const DecodeRequest &request)
{
    device.seek(0);
    TiffComplaints complaints;
    const TiffHandle tiff = openTiff(device, "rm", complaints);
    if (!tiff)
        throw PictureFailure(pictureText("is no TIFF file, or a damaged one."));
    const TiffLayout layout = layoutOf(tiff.get());
    if (!isWithinLimits(layout.width, layout.height, 4))
        pixelsForClaim(layout.width, layout.height, 4, device.size(), 1);
    checkCancelled(request);
    DecodedPicture decoded = isPlain(tiff.get(), layout)
        ? readPlain(tiff.get(), layout, device.size(), request)
        : readConverted(tiff.get(), layout, device.size());
    if (decoded.picture.isNull())
        throw PictureFailure(pictureText("cannot be decoded: %1.").arg(complaints.first));
    if (complaints.hasErrors && decoded.damage.isEmpty())
        decoded.damage = pictureText("The file is damaged: parts of the picture may be wrong.");
    return decoded;
}

} // namespace vandrel

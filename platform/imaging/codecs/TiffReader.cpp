#include "platform/imaging/codecs/TiffReader.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <future>
#include <mutex>
#include <new>
#include <vector>

#include "platform/imaging/codecs/ColourProfile.h"
#include "platform/imaging/codecs/ExifOrientation.h"
#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PiecesInOrder.h"
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

/// Where the rows of a file that is read as it stands go.
struct PlainTarget {
    TiffLayout layout;
    PixelView pixels;
    int depth = 0;
    /// Octets of a row in the file.
    std::size_t rowLength = 0;

    void take(const std::uint8_t *row, int y) const
    {
        std::uint8_t *to = pixels.row(y);
        if (layout.samples == 1) {
            unpackRow(row, layout.bits, pixels.width, to);
            return;
        }
        for (int x = 0; x < pixels.width; ++x, row += pixels.channels, to += pixels.channels) {
            to[0] = row[2];
            to[1] = row[1];
            to[2] = row[0];
            if (pixels.channels == 4)
                to[3] = row[3];
        }
    }
};

std::uint32_t rowsPerStrip(TIFF *tiff)
{
    std::uint32_t rows = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    return rows;
}

/// Reads a file's strips on all processors: each thread opens the file for itself, as the library's handles are for one
/// thread alone, and takes the strip that is next.
class StripReaders
{
public:
    StripReaders(QIODevice &device, TIFF *tiff, const PlainTarget &target, const DecodeRequest &request)
        : m_device(device), m_target(target), m_request(request), m_strips(TIFFNumberOfStrips(tiff)),
          m_rows(std::min<std::int64_t>(rowsPerStrip(tiff), target.pixels.height)),
          m_length(m_rows * static_cast<std::int64_t>(target.rowLength))
    { }

    /// Whether the file is worth it: strips of which each thread can hold one.
    bool isWorthIt() const
    {
        constexpr std::int64_t longest = 16 * 1024 * 1024;
        constexpr std::int64_t smallest = 1024 * 1024;
        // Small pictures for many boxes are read on all processors as it is.
        return !m_request.box && m_strips > 1 && m_length <= longest && m_length * m_strips >= smallest
            && static_cast<std::int64_t>(m_strips) * m_rows >= m_target.pixels.height;
    }

    /// False where anything is wrong with the file.
    bool read()
    {
        std::vector<std::future<void>> readers;
        readers.reserve(static_cast<std::size_t>(workersAtOnce()));
        for (int reader = 0; reader < workersAtOnce(); ++reader)
            readers.push_back(std::async(std::launch::async | std::launch::deferred, [this] { readSome(); }));
        for (std::future<void> &reader : readers)
            reader.get();
        checkCancelled(m_request);
        return !m_isDamaged;
    }

private:
    void readSome()
    {
        SharedOctets octets(m_device, m_lock);
        TiffComplaints complaints;
        const TiffHandle tiff = openTiff(octets, "rm", complaints);
        std::vector<std::uint8_t> rows(static_cast<std::size_t>(m_length));
        while (tiff && !m_isDamaged) {
            const std::uint32_t strip = m_next++;
            if (strip >= m_strips)
                return;
            readStrip(tiff.get(), strip, rows);
            m_isDamaged = m_isDamaged || complaints.hasErrors;
        }
        m_isDamaged = true;
    }

    void readStrip(TIFF *tiff, std::uint32_t strip, std::vector<std::uint8_t> &rows)
    {
        const std::int64_t first = strip * m_rows;
        const auto end = std::min<std::int64_t>(first + m_rows, m_target.pixels.height);
        const auto length
            = static_cast<tmsize_t>((end - first) * static_cast<std::int64_t>(m_target.rowLength));
        if (length <= 0 || TIFFReadEncodedStrip(tiff, strip, rows.data(), length) != length) {
            m_isDamaged = true;
            return;
        }
        for (std::int64_t y = first; y < end; ++y)
            m_target.take(&rows[static_cast<std::size_t>(y - first) * m_target.rowLength],
                          static_cast<int>(y));
        const std::lock_guard guard(m_reportLock);
        m_isDamaged = m_isDamaged || (m_request.isCancelled && m_request.isCancelled());
        reportProgress(m_request.progress, ++m_done, m_strips);
    }

    QIODevice &m_device;
    std::mutex m_lock;
    const PlainTarget &m_target;
    const DecodeRequest &m_request;
    std::uint32_t m_strips;
    std::int64_t m_rows;
    std::int64_t m_length;
    std::atomic<std::uint32_t> m_next = 0;
    std::atomic<bool> m_isDamaged = false;
    std::mutex m_reportLock;
    std::int64_t m_done = 0;
};

/// Reads row by row as far as the file is sound; gives how many there are.
int readRows(TIFF *tiff, const PlainTarget &target, const DecodeRequest &request)
{
    std::vector<std::uint8_t> row(target.rowLength);
    for (int y = 0; y < target.pixels.height; ++y) {
        atRow(request, y, target.pixels.height);
        if (TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0) != 1)
            return y;
        target.take(row.data(), y);
    }
    return target.pixels.height;
}

/// Reads rows as they stand.
DecodedPicture
readPlain(QIODevice &device, TIFF *tiff, const TiffLayout &layout, const DecodeRequest &request)
{
    const bool isIndexed = layout.samples == 1;
    const int depth = !isIndexed ? layout.samples * 8 : layout.bits == 2 ? 4 : layout.bits;
    // The densest compression is that of blank pages: a few bits a row.
    constexpr std::int64_t mostPerOctet = 100'000;
    const auto pixels
        = pixelsForClaim(layout.width, layout.height, channelsOfDepth(depth), device.size(), mostPerOctet);
    const PixelView view = pixels->view();
    const tmsize_t length = TIFFScanlineSize(tiff);
    if (length <= 0 || length > std::int64_t{layout.width} * view.channels + 8)
        throw PictureFailure(pictureText("says of itself what cannot be."));
    const PlainTarget target{layout, view, depth, static_cast<std::size_t>(length)};
    StripReaders readers(device, tiff, target, request);
    // A damaged file is read again from its beginning, up to the damage.
    const int rows = readers.isWorthIt() && readers.read() ? view.height : readRows(tiff, target, request);
    if (rows == 0)
        return {};
    if (const auto profile
        = layout.samples != 3 || request.box ? nullptr : profileOf(tiff, ProfiledPixels::Bgr)) {
        for (int y = 0; y < rows; ++y)
            profile->apply(view.row(y), view.width, view.row(y));
    }
    DecodedPicture decoded;
    if (rows < view.height)
        decoded.damage = endsEarly(rows, view.height);
    decoded.picture
        = upright(Raster(pixels, depth, isIndexed ? paletteOf(tiff, layout) : Palette(), layout.resolution),
                  layout.orientation);
    return decoded;
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

/// Rows that the library can convert without decoding any twice: whole strips or tiles, at least `worth` pixels of them.
int rowsOfBand(TIFF *tiff, const TiffLayout &layout)
{
    constexpr std::int64_t worth = 1'000'000;
    std::uint32_t rows = layout.height;
    TIFFGetFieldDefaulted(tiff, TIFFIsTiled(tiff) ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, &rows);
    const std::int64_t unit = std::clamp<std::int64_t>(rows, 1, layout.height);
    const std::int64_t units = std::max<std::int64_t>(1, worth / (unit * layout.width));
    return static_cast<int>(std::min<std::int64_t>(unit * units, layout.height));
}

/// The library's converter, at work on one file.
class RgbaConverter
{
public:
    RgbaConverter(TIFF *tiff, const TiffLayout &layout) : m_width(layout.width)
    {
        std::array<char, 1024> reason{};
        m_isSound = TIFFRGBAImageBegin(&m_image, tiff, 1, reason.data()) == 1;
        // Asked for the picture's own orientation, the library leaves the rows as they are stored.
        m_image.req_orientation = layout.orientation;
    }
    ~RgbaConverter()
    {
        if (m_isSound)
            TIFFRGBAImageEnd(&m_image);
    }
    RgbaConverter(const RgbaConverter &) = delete;
    RgbaConverter &operator=(const RgbaConverter &) = delete;

    /// False where they cannot be read.
    bool read(int first, int rows, std::uint32_t *to)
    {
        if (!m_isSound)
            return false;
        m_image.row_offset = first;
        m_image.col_offset = 0;
        return TIFFRGBAImageGet(&m_image, to, m_width, static_cast<std::uint32_t>(rows)) == 1;
    }

private:
    TIFFRGBAImage m_image{};
    std::uint32_t m_width;
    bool m_isSound = false;
};

/// Lets the library convert whatever there is, band by band.
DecodedPicture
readConverted(TIFF *tiff, const TiffLayout &layout, qint64 octetsInFile, const DecodeRequest &request)
{
    checkConvertible(tiff);
    const int depth = layout.hasAlpha ? 32 : 24;
    constexpr std::int64_t mostPerOctet = 100'000;
    const auto pixels
        = pixelsForClaim(layout.width, layout.height, channelsOfDepth(depth), octetsInFile, mostPerOctet);
    const PixelView all = pixels->view();
    const int rowsAtOnce = rowsOfBand(tiff, layout);
    std::vector<std::uint32_t> band(static_cast<std::size_t>(all.width)
                                    * static_cast<std::size_t>(rowsAtOnce));
    const bool isProfiled = depth == 24 && layout.photometric == PHOTOMETRIC_RGB;
    const auto profile = isProfiled ? profileOf(tiff, ProfiledPixels::Bgr) : nullptr;
    RgbaConverter converter(tiff, layout);
    DecodedPicture decoded;
    for (int first = 0; first < all.height; first += rowsAtOnce) {
        checkCancelled(request);
        const int rows = std::min(rowsAtOnce, all.height - first);
        std::fill(band.begin(), band.end(), 0U);
        if (!converter.read(first, rows, band.data()))
            decoded.damage = pictureText("The file is damaged: parts of the picture may be missing.");
        for (int y = first; y < first + rows; ++y) {
            takeRow(&band[static_cast<std::size_t>(y - first) * layout.width], all.width, layout.hasAlpha,
                    all.row(y));
            if (profile)
                profile->apply(all.row(y), all.width, all.row(y));
        }
        reportProgress(request.progress, first + rows, all.height);
    }
    decoded.picture = upright(Raster(pixels, depth, {}, layout.resolution), layout.orientation);
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
        ? readPlain(device, tiff.get(), layout, request)
        : readConverted(tiff.get(), layout, device.size(), request);
    if (decoded.picture.isNull())
        throw PictureFailure(pictureText("cannot be decoded: %1.").arg(complaints.first));
    if (complaints.hasErrors && decoded.damage.isEmpty())
        decoded.damage = pictureText("The file is damaged: parts of the picture may be wrong.");
    return decoded;
}

} // namespace vandrel

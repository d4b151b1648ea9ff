#include "platform/imaging/codecs/JpegReader.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include <QIODevice>

#include "platform/imaging/codecs/ColourProfile.h"
#include "platform/imaging/codecs/ExifOrientation.h"
#include "platform/imaging/codecs/JpegLibrary.h"
#include "platform/imaging/codecs/JpegQuality.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/ThreadTime.h"

namespace vandrel {

namespace {

/// A progressive file may have any number of scans, each of which costs a walk through the whole picture.
constexpr int mostScans = 100;
constexpr std::chrono::seconds longestDecoding{10};
constexpr unsigned markerExif = JPEG_APP0 + 1;
constexpr unsigned markerProfile = JPEG_APP0 + 2;

/// Feeds the library from a device.
struct DeviceSource {
    jpeg_source_mgr manager{};
    QIODevice *device = nullptr;
    std::array<JOCTET, 65536> buffer{};
    bool hasEnded = false;
};

void startSource(j_decompress_ptr)
{
    // The device stands at its beginning.
}

boolean fillSource(j_decompress_ptr info)
{
    auto *source = reinterpret_cast<DeviceSource *>(info->src);
    const qint64 count = source->device->read(reinterpret_cast<char *>(source->buffer.data()),
                                              static_cast<qint64>(source->buffer.size()));
    source->manager.next_input_byte = source->buffer.data();
    if (count > 0) {
        source->manager.bytes_in_buffer = static_cast<std::size_t>(count);
        return TRUE;
    }
    // The mark of the picture's end, so that what was read so far is shown.
    source->hasEnded = true;
    source->buffer[0] = 0xFF;
    source->buffer[1] = JPEG_EOI;
    source->manager.bytes_in_buffer = 2;
    return TRUE;
}

void skipSource(j_decompress_ptr info, long count)
{
    jpeg_source_mgr *manager = info->src;
    while (count > 0 && count > static_cast<long>(manager->bytes_in_buffer)) {
        count -= static_cast<long>(manager->bytes_in_buffer);
        fillSource(info);
        if (reinterpret_cast<DeviceSource *>(manager)->hasEnded)
            return;
    }
    if (count > 0) {
        manager->next_input_byte += count;
        manager->bytes_in_buffer -= static_cast<std::size_t>(count);
    }
}

void endSource(j_decompress_ptr)
{
    // The device is its owner's.
}

/// Ends progressive files that take too long, and those nobody wants any more; tells how far decoding is.
struct ScanLimit {
    jpeg_progress_mgr manager{};
    std::chrono::nanoseconds started = threadTime();
    const DecodeRequest *request = nullptr;
    bool isExceeded = false;
    bool isCancelled = false;
    int told = 0;

    void tell(int percent)
    {
        if (percent <= told)
            return;
        told = percent;
        reportProgress(request->progress, percent, 100);
    }
};

void watchScans(j_common_ptr info)
{
    auto *limit = reinterpret_cast<ScanLimit *>(info->progress);
    const auto *decoder = reinterpret_cast<j_decompress_ptr>(info);
    limit->isCancelled = limit->request->isCancelled && limit->request->isCancelled();
    limit->isExceeded
        = decoder->input_scan_number > mostScans || threadTime() - limit->started > longestDecoding;
    const jpeg_progress_mgr &at = limit->manager;
    // The number of passes is a guess as long as not all scans are read.
    const std::int64_t whole = std::int64_t{at.total_passes} * at.pass_limit;
    const std::int64_t done = std::int64_t{at.completed_passes} * at.pass_limit + at.pass_counter;
    if (whole > 0 && done <= whole)
        limit->tell(static_cast<int>(done * 100 / whole));
    if (limit->isCancelled || limit->isExceeded)
        std::longjmp(static_cast<JpegErrors *>(info->client_data)->onError, 1);
}

class JpegDecoder
{
public:
    JpegDecoder(QIODevice &device, const DecodeRequest &request) : m_request(request)
    {
        m_info.err = &m_errors.manager;
        m_info.client_data = &m_errors;
        m_source.device = &device;
        m_limit.request = &request;
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&m_info); }
    JpegDecoder(const JpegDecoder &) = delete;
    JpegDecoder &operator=(const JpegDecoder &) = delete;

    DecodedPicture decode()
    {
        m_source.device->seek(0);
        if (!withoutJpegError(m_errors, [this] { readHeader(); }))
            fail();
        // The library forgets the components of a picture that it has decoded.
        m_origin = originOf(m_info);
        m_orientation = findOrientation();
        findProfile();
        if (!withoutJpegError(m_errors, [this] { chooseOutput(); }))
            fail();
        const int channels = m_info.out_color_space == JCS_GRAYSCALE ? 1 : 3;
        m_pixels = pixelsForClaim(m_info.output_width, m_info.output_height, channels,
                                  m_source.device->size(), mostPerOctet());
        m_row.resize(std::size_t{m_info.output_width} * 4);
        // What a failure leaves behind is shown as far as it goes.
        const bool isWhole = withoutJpegError(m_errors, [this] { readRows(); });
        if (m_limit.isCancelled)
            throw DecodingCancelled();
        if (!isWhole && m_rows == 0)
            fail();
        return result(isWhole);
    }

private:
    static std::int64_t mostPerOctet()
    {
        // Flat progressive pictures take next to nothing; only absurd ones stand out.
        return 200'000;
    }

    [[noreturn]] void fail() const
    {
        if (m_limit.isCancelled)
            throw DecodingCancelled();
        if (m_limit.isExceeded)
            throw PictureFailure(pictureText("takes too long to decode."));
        throw PictureFailure(
            pictureText("cannot be decoded: %1.").arg(QString::fromLatin1(m_errors.message)));
    }

    void readHeader()
    {
        jpeg_create_decompress(&m_info);
        m_info.client_data = &m_errors;
        m_source.manager.init_source = startSource;
        m_source.manager.fill_input_buffer = fillSource;
        m_source.manager.skip_input_data = skipSource;
        m_source.manager.resync_to_restart = jpeg_resync_to_restart;
        m_source.manager.term_source = endSource;
        m_info.src = &m_source.manager;
        m_limit.manager.progress_monitor = watchScans;
        m_info.progress = &m_limit.manager;
        jpeg_save_markers(&m_info, markerExif, 0xFFFF);
        if (!m_request.box)
            jpeg_save_markers(&m_info, markerProfile, 0xFFFF);
        jpeg_read_header(&m_info, TRUE);
    }

    int findOrientation() const
    {
        constexpr QByteArrayView mark("Exif\0\0", 6);
        for (const jpeg_marker_struct *marker = m_info.marker_list; marker != nullptr;
             marker = marker->next) {
            const QByteArrayView data(reinterpret_cast<const char *>(marker->data),
                                      static_cast<qsizetype>(marker->data_length));
            if (marker->marker == markerExif && data.startsWith(mark))
                return exifOrientation(data.sliced(mark.size()));
        }
        return 1;
    }

    ProfiledPixels pixelsInFile() const
    {
        if (m_info.num_components == 4)
            return m_info.saw_Adobe_marker ? ProfiledPixels::InvertedCmyk : ProfiledPixels::Cmyk;
        return m_info.jpeg_color_space == JCS_GRAYSCALE ? ProfiledPixels::Gray : ProfiledPixels::Bgr;
    }

    void findProfile()
    {
        JOCTET *octets = nullptr;
        unsigned count = 0;
        const bool isRead = withoutJpegError(m_errors, [&] {
            if (!jpeg_read_icc_profile(&m_info, &octets, &count))
                octets = nullptr;
        });
        if (isRead && octets != nullptr)
            m_profile = ColourProfile::make(
                {reinterpret_cast<const char *>(octets), static_cast<qsizetype>(count)}, pixelsInFile());
        std::free(octets);
    }

    void chooseOutput()
    {
        if (m_info.jpeg_color_space == JCS_GRAYSCALE)
            m_info.out_color_space = JCS_GRAYSCALE;
        else if (m_info.num_components == 4)
            m_info.out_color_space = JCS_CMYK;
        else
            m_info.out_color_space = JCS_EXT_BGR;
        if (m_request.box)
            chooseScale(*m_request.box);
        jpeg_calc_output_dimensions(&m_info);
    }

    /// The smallest of an eighth, a quarter, a half and the whole that is at least twice the box. The library is
    /// slower at the sizes between.
    void chooseScale(QSize box)
    {
        const QSize upright = swapsSides(m_orientation) ? box.transposed() : box;
        m_info.scale_denom = 8;
        for (unsigned scale = 1; scale <= 8; scale *= 2) {
            m_info.scale_num = scale;
            const auto width = static_cast<qint64>(m_info.image_width) * scale / 8;
            const auto height = static_cast<qint64>(m_info.image_height) * scale / 8;
            // A picture that is to fit the box touches two of its sides only.
            if (width >= 2 * upright.width() || height >= 2 * upright.height())
                return;
        }
    }

    void readRows()
    {
        jpeg_start_decompress(&m_info);
        const PixelView view = m_pixels->view();
        while (m_info.output_scanline < m_info.output_height) {
            const auto y = static_cast<int>(m_info.output_scanline);
            JSAMPROW row = m_info.out_color_space == JCS_CMYK ? m_row.data() : view.row(y);
            if (jpeg_read_scanlines(&m_info, &row, 1) != 1)
                return;
            finishRow(row, view.width, view.row(y));
            m_rows = y + 1;
        }
        jpeg_finish_decompress(&m_info);
    }

    void finishRow(const JSAMPLE *row, int width, std::uint8_t *to) const
    {
        if (m_profile)
            m_profile->apply(row, width, to);
        else if (m_info.out_color_space == JCS_CMYK)
            fromInks(row, width, m_info.saw_Adobe_marker != 0, to);
    }

    /// Without a profile, inks are taken for what they leave of white.
    static void fromInks(const JSAMPLE *inks, int width, bool isInverted, std::uint8_t *to)
    {
        const int flip = isInverted ? 0 : 255;
        for (int x = 0; x < width; ++x, inks += 4, to += 3) {
            const int light = inks[3] ^ flip;
            to[2] = static_cast<std::uint8_t>(((inks[0] ^ flip) * light + 127) / 255);
            to[1] = static_cast<std::uint8_t>(((inks[1] ^ flip) * light + 127) / 255);
            to[0] = static_cast<std::uint8_t>(((inks[2] ^ flip) * light + 127) / 255);
        }
    }

    Resolution resolution() const
    {
        constexpr double centimetresPerInch = 2.54;
        if (m_info.saw_JFIF_marker == 0 || m_info.density_unit == 0)
            return {};
        const double factor = m_info.density_unit == 2 ? centimetresPerInch : 1;
        return {m_info.X_density * factor, m_info.Y_density * factor};
    }

    DecodedPicture result(bool isWhole) const
    {
        DecodedPicture decoded;
        const bool isGray = m_info.out_color_space == JCS_GRAYSCALE;
        const Raster picture(m_pixels, isGray ? 8 : 24, isGray ? grayPalette(256) : Palette(), resolution());
        decoded.picture = upright(picture, m_orientation).withJpegOrigin(m_origin);
        if (!isWhole)
            decoded.damage = endsEarly(m_rows, static_cast<int>(m_info.output_height));
        else if (m_source.hasEnded)
            decoded.damage = pictureText("The file ends early: the lower part of the picture is missing.");
        else if (m_errors.manager.num_warnings > 0)
            decoded.damage = pictureText("The file is damaged: parts of the picture may be wrong.");
        return decoded;
    }

    const DecodeRequest &m_request;
    JpegErrors m_errors;
    jpeg_decompress_struct m_info{};
    DeviceSource m_source;
    ScanLimit m_limit;
    std::unique_ptr<ColourProfile> m_profile;
    std::shared_ptr<PixelBuffer> m_pixels;
    std::vector<JSAMPLE> m_row;
    JpegOrigin m_origin;
    int m_orientation = 1;
    int m_rows = 0;
};

} // namespace

DecodedPicture readJpeg(QIODevice &device, const DecodeRequest &request)
{
    return JpegDecoder(device, request).decode();
}

} // namespace vandrel

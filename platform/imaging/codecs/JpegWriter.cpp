#include "platform/imaging/codecs/JpegWriter.h"

#include <algorithm>
#include <cmath>
#include <new>

#include <QCoreApplication>

#include "platform/imaging/codecs/Encoding.h"
#include "platform/imaging/codecs/JpegLibrary.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PiecesInOrder.h"
#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

constexpr int usualQuality = 90;
constexpr int blockSide = 8;
/// A band is what lies between two restart marks, whose distance is told in sixteen bits.
constexpr int mostUnitsOfBand = 65535;
constexpr int pixelsOfBand = 250'000;
constexpr std::size_t markLength = 2;

/// How a picture is written.
struct JpegLayout {
    bool isGray = false;
    JpegOrigin how;
    /// Rows of a band; as many as the picture's where there is but one.
    int bandRows = 0;
    /// Units of coded blocks in a band; 0 where there is but one.
    unsigned restartInterval = 0;
};

JpegLayout jpegLayoutOf(const Raster &picture)
{
    JpegLayout layout;
    layout.isGray = picture.isIndexed() && isGray(picture.palette());
    layout.how = picture.jpegOrigin().value_or(JpegOrigin{usualQuality, 1, 1});
    if (layout.isGray)
        layout.how.sharedAcross = layout.how.sharedDown = 1;
    const int unitWidth = blockSide * layout.how.sharedAcross;
    const int unitHeight = blockSide * layout.how.sharedDown;
    const int unitsAcross = (picture.width() + unitWidth - 1) / unitWidth;
    const int unitsDown
        = std::clamp(pixelsOfBand / (picture.width() * unitHeight), 1, mostUnitsOfBand / unitsAcross);
    layout.bandRows = unitsDown * unitHeight;
    if (layout.bandRows < picture.height())
        layout.restartInterval = static_cast<unsigned>(unitsDown * unitsAcross);
    else
        layout.bandRows = picture.height();
    return layout;
}

/// Where the library's octets go: into memory.
struct MemoryTarget {
    jpeg_destination_mgr manager{};
    Octets octets;
    JpegErrors *errors = nullptr;
    bool isMemoryShort = false;
};

/// Makes room behind what is there. Exceptions must not cross the library, which is told in its own way.
void growTarget(MemoryTarget &target, std::size_t used)
{
    try {
        target.octets.resize(std::max<std::size_t>(65536, used * 2));
    } catch (const std::bad_alloc &) {
        target.isMemoryShort = true;
    }
    if (target.isMemoryShort)
        std::longjmp(target.errors->onError, 1);
    target.manager.next_output_byte = target.octets.data() + used;
    target.manager.free_in_buffer = target.octets.size() - used;
}

MemoryTarget &targetOf(j_compress_ptr info)
{
    return *reinterpret_cast<MemoryTarget *>(info->dest);
}

void startTarget(j_compress_ptr info)
{
    growTarget(targetOf(info), 0);
}

boolean enlargeTarget(j_compress_ptr info)
{
    growTarget(targetOf(info), targetOf(info).octets.size());
    return TRUE;
}

void endTarget(j_compress_ptr info)
{
    MemoryTarget &target = targetOf(info);
    target.octets.resize(target.octets.size() - target.manager.free_in_buffer);
}

/// Writes some rows of a picture as a JPEG file of its own.
class JpegEncoder
{
public:
    JpegEncoder(const Raster &picture, const JpegLayout &layout, int first, int end)
        : m_picture(picture), m_layout(layout), m_first(first), m_end(end)
    {
        m_info.err = &m_errors.manager;
        m_info.client_data = &m_errors;
        m_target.errors = &m_errors;
        m_row.resize(static_cast<std::size_t>(picture.width()) * 3);
    }
    ~JpegEncoder() { jpeg_destroy_compress(&m_info); }
    JpegEncoder(const JpegEncoder &) = delete;
    JpegEncoder &operator=(const JpegEncoder &) = delete;

    Octets encode()
    {
        if (withoutJpegError(m_errors, [this] { writeAll(); }))
            return std::move(m_target.octets);
        if (m_target.isMemoryShort)
            throw std::bad_alloc();
        throw PictureFailure(QCoreApplication::translate("PictureFiles", "cannot be written as JPEG: %1.")
                                 .arg(QString::fromLatin1(m_errors.message)));
    }

private:
    void writeAll()
    {
        jpeg_create_compress(&m_info);
        m_info.client_data = &m_errors;
        m_target.manager.init_destination = startTarget;
        m_target.manager.empty_output_buffer = enlargeTarget;
        m_target.manager.term_destination = endTarget;
        m_info.dest = &m_target.manager;
        describe();
        jpeg_start_compress(&m_info, TRUE);
        for (int y = m_first; y < m_end; ++y) {
            auto row = const_cast<JSAMPROW>(rowOf(y));
            jpeg_write_scanlines(&m_info, &row, 1);
        }
        jpeg_finish_compress(&m_info);
    }

    void describe()
    {
        const bool isGray = m_layout.isGray;
        m_info.image_width = static_cast<JDIMENSION>(m_picture.width());
        m_info.image_height = static_cast<JDIMENSION>(m_end - m_first);
        m_info.input_components = isGray ? 1 : m_picture.bitsPerPixel() == 32 ? 4 : 3;
        m_info.in_color_space = isGray       ? JCS_GRAYSCALE
            : m_picture.bitsPerPixel() == 32 ? JCS_EXT_BGRX
                                             : JCS_EXT_BGR;
        jpeg_set_defaults(&m_info);
        jpeg_set_quality(&m_info, m_layout.how.quality, TRUE);
        m_info.comp_info[0].h_samp_factor = m_layout.how.sharedAcross;
        m_info.comp_info[0].v_samp_factor = m_layout.how.sharedDown;
        // Codes made for the picture would save a little of the file, but take another walk through all of it, which is
        // kept as coefficients meanwhile; and bands have to have them in common.
        m_info.optimize_coding = FALSE;
        m_info.restart_interval = m_layout.restartInterval;
        const Resolution resolution = m_picture.resolution();
        if (resolution.isKnown()) {
            m_info.density_unit = 1;
            m_info.X_density
                = static_cast<UINT16>(std::clamp(std::round(resolution.horizontal), 1.0, 65535.0));
            m_info.Y_density = static_cast<UINT16>(std::clamp(std::round(resolution.vertical), 1.0, 65535.0));
        }
    }

    const JSAMPLE *rowOf(int y)
    {
        const std::uint8_t *from = m_picture.view().row(y);
        if (!m_picture.isIndexed())
            return from;
        if (!m_layout.isGray) {
            expandRow(from, m_picture.width(), m_picture.palette(), m_row.data());
            return m_row.data();
        }
        const Palette &palette = m_picture.palette();
        std::transform(from, from + m_picture.width(), m_row.begin(),
                       [&palette](std::uint8_t number) { return palette[number].red; });
        return m_row.data();
    }

    const Raster &m_picture;
    const JpegLayout &m_layout;
    int m_first;
    int m_end;
    JpegErrors m_errors;
    jpeg_compress_struct m_info{};
    MemoryTarget m_target;
    std::vector<JSAMPLE> m_row;
};

/// Joins files of bands to that of the whole picture. What is coded begins anew at each restart mark, as at the beginning
/// of a file, so that nothing but the headers has to differ.
class BandJoiner
{
public:
    BandJoiner(QIODevice &device, int height) : m_out(device), m_height(height) { }

    void add(Octets band)
    {
        const std::size_t begin = findScan(band);
        if (m_bands == 0) {
            m_out.write(band.data(), static_cast<qint64>(begin));
        } else {
            m_out.octet(0xFF);
            m_out.octet(JPEG_RST0 + (m_bands - 1) % 8);
        }
        const std::size_t end = band.size() - markLength;
        m_out.write(band.data() + begin, static_cast<qint64>(end - begin));
        ++m_bands;
    }

    void end()
    {
        m_out.octet(0xFF);
        m_out.octet(JPEG_EOI);
    }

    int bands() const { return m_bands; }

private:
    static constexpr int startOfFrame = 0xC0;
    static constexpr int startOfExtendedFrame = 0xC1;
    static constexpr int startOfScan = 0xDA;

    /// Where the coded blocks begin; on the way there, the frame is told the height of the whole picture.
    std::size_t findScan(Octets &file) const
    {
        std::size_t at = markLength;
        while (file.at(at + 1) != startOfScan) {
            if (file[at + 1] == startOfFrame || file[at + 1] == startOfExtendedFrame) {
                file.at(at + 5) = static_cast<std::uint8_t>(m_height >> 8);
                file.at(at + 6) = static_cast<std::uint8_t>(m_height & 255);
            }
            at += markLength + lengthAt(file, at);
        }
        return at + markLength + lengthAt(file, at);
    }

    static std::size_t lengthAt(const Octets &file, std::size_t marker)
    {
        return static_cast<std::size_t>(file.at(marker + 2) << 8 | file.at(marker + 3));
    }

    OctetWriter m_out;
    int m_height;
    int m_bands = 0;
};

} // namespace

void writeJpeg(const Raster &picture, QIODevice &device, const FileProgress &progress)
{
    // The library sees no more of the height than that of a band.
    if (picture.width() > JPEG_MAX_DIMENSION || picture.height() > JPEG_MAX_DIMENSION)
        throw PictureFailure(QCoreApplication::translate(
            "PictureFiles",
            "cannot be a JPEG file: those hold at most 65500 pixels a side. Save it in another format."));
    const JpegLayout layout = jpegLayoutOf(picture);
    const int bands = (picture.height() + layout.bandRows - 1) / layout.bandRows;
    BandJoiner joiner(device, picture.height());
    inOrder<Octets>(
        bands,
        [&](int band) {
            const int first = band * layout.bandRows;
            return JpegEncoder(picture, layout, first, std::min(first + layout.bandRows, picture.height()))
                .encode();
        },
        [&](Octets octets) {
            joiner.add(std::move(octets));
            reportProgress(progress, joiner.bands(), bands);
        });
    joiner.end();
}

} // namespace vandrel

#include "platform/imaging/codecs/JpegWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <QCoreApplication>
#include <QIODevice>

#include "platform/imaging/codecs/JpegLibrary.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

constexpr int usualQuality = 90;

struct DeviceTarget {
    jpeg_destination_mgr manager{};
    QIODevice *device = nullptr;
    std::array<JOCTET, 65536> buffer{};
};

DeviceTarget &targetOf(j_compress_ptr info)
{
    return *reinterpret_cast<DeviceTarget *>(info->dest);
}

void emptyBuffer(j_compress_ptr info)
{
    DeviceTarget &target = targetOf(info);
    target.manager.next_output_byte = target.buffer.data();
    target.manager.free_in_buffer = target.buffer.size();
}

boolean writeBuffer(j_compress_ptr info)
{
    DeviceTarget &target = targetOf(info);
    // Failures of the device are told when it is closed.
    target.device->write(reinterpret_cast<const char *>(target.buffer.data()),
                         static_cast<qint64>(target.buffer.size()));
    emptyBuffer(info);
    return TRUE;
}

void writeRest(j_compress_ptr info)
{
    DeviceTarget &target = targetOf(info);
    target.device->write(reinterpret_cast<const char *>(target.buffer.data()),
                         static_cast<qint64>(target.buffer.size() - target.manager.free_in_buffer));
}

class JpegEncoder
{
public:
    JpegEncoder(const Raster &picture, QIODevice &device)
        : m_picture(picture), m_isGray(picture.isIndexed() && isGray(picture.palette()))
    {
        m_info.err = &m_errors.manager;
        m_info.client_data = &m_errors;
        m_target.device = &device;
        m_row.resize(static_cast<std::size_t>(picture.width()) * 3);
    }
    ~JpegEncoder() { jpeg_destroy_compress(&m_info); }
    JpegEncoder(const JpegEncoder &) = delete;
    JpegEncoder &operator=(const JpegEncoder &) = delete;

    void encode()
    {
        if (!withoutJpegError(m_errors, [this] { writeAll(); }))
            throw PictureFailure(QCoreApplication::translate("PictureFiles", "cannot be written as JPEG: %1.")
                                     .arg(QString::fromLatin1(m_errors.message)));
    }

private:
    void writeAll()
    {
        jpeg_create_compress(&m_info);
        m_info.client_data = &m_errors;
        m_target.manager.init_destination = emptyBuffer;
        m_target.manager.empty_output_buffer = writeBuffer;
        m_target.manager.term_destination = writeRest;
        m_info.dest = &m_target.manager;
        describe();
        jpeg_start_compress(&m_info, TRUE);
        for (int y = 0; y < m_picture.height(); ++y) {
            auto row = const_cast<JSAMPROW>(rowOf(y));
            jpeg_write_scanlines(&m_info, &row, 1);
        }
        jpeg_finish_compress(&m_info);
    }

    void describe()
    {
        m_info.image_width = static_cast<JDIMENSION>(m_picture.width());
        m_info.image_height = static_cast<JDIMENSION>(m_picture.height());
        m_info.input_components = m_isGray ? 1 : m_picture.bitsPerPixel() == 32 ? 4 : 3;
        m_info.in_color_space = m_isGray     ? JCS_GRAYSCALE
            : m_picture.bitsPerPixel() == 32 ? JCS_EXT_BGRX
                                             : JCS_EXT_BGR;
        jpeg_set_defaults(&m_info);
        const JpegOrigin how = m_picture.jpegOrigin().value_or(JpegOrigin{usualQuality, 1, 1});
        jpeg_set_quality(&m_info, how.quality, TRUE);
        m_info.comp_info[0].h_samp_factor = m_isGray ? 1 : how.sharedAcross;
        m_info.comp_info[0].v_samp_factor = m_isGray ? 1 : how.sharedDown;
        // Codes made for the picture would save a little of the file, but take another walk through all of it, which is
        // kept as coefficients meanwhile.
        m_info.optimize_coding = FALSE;
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
        if (!m_isGray) {
            expandRow(from, m_picture.width(), m_picture.palette(), m_row.data());
            return m_row.data();
        }
        const Palette &palette = m_picture.palette();
        std::transform(from, from + m_picture.width(), m_row.begin(),
                       [&palette](std::uint8_t number) { return palette[number].red; });
        return m_row.data();
    }

    const Raster &m_picture;
    bool m_isGray;
    JpegErrors m_errors;
    jpeg_compress_struct m_info{};
    DeviceTarget m_target;
    std::vector<JSAMPLE> m_row;
};

} // namespace

void writeJpeg(const Raster &picture, QIODevice &device)
{
    JpegEncoder(picture, device).encode();
}

} // namespace vandrel

#include "platform/capture/XcbScreenSource.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QPainter>
#include <QRegion>

#include "platform/xcb/XcbOwned.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// A picture that comes through the connection comes in pieces of about this size.
constexpr qint64 pieceSize = 16 * 1024 * 1024;

[[noreturn]] void fail(const char *reason)
{
    throw RuntimeError(error::DeviceUnavailable, QCoreApplication::translate("XcbScreenSource", reason));
}

/// How the screen's pixels lie in memory.
struct PixelLayout {
    QImage::Format format = QImage::Format_Invalid;
    int bitsPerPixel = 0;
    qsizetype bytesPerLine = 0;
};

struct KnownFormat {
    int bitsPerPixel;
    quint32 red;
    quint32 green;
    quint32 blue;
    QImage::Format format;
};

constexpr KnownFormat knownFormats[] = {
    {32, 0xff0000, 0xff00, 0xff, QImage::Format_RGB32},
    {32, 0xff, 0xff00, 0xff0000, QImage::Format_RGBX8888},
    {32, 0x3ff00000, 0xffc00, 0x3ff, QImage::Format_RGB30},
    {32, 0x3ff, 0xffc00, 0x3ff00000, QImage::Format_BGR30},
    {16, 0xf800, 0x7e0, 0x1f, QImage::Format_RGB16},
    {16, 0x7c00, 0x3e0, 0x1f, QImage::Format_RGB555},
};

/// The connection's end of memory that the X server writes a picture into.
class SharedMemory
{
public:
    explicit SharedMemory(size_t size)
        : m_size(size), m_descriptor(memfd_create("vandrel-screen", MFD_CLOEXEC))
    {
        if (m_descriptor < 0 || ftruncate(m_descriptor, static_cast<off_t>(size)) != 0)
            return;
        void *const octets = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
        m_octets = octets == MAP_FAILED ? nullptr : static_cast<uchar *>(octets);
    }
    ~SharedMemory()
    {
        if (m_octets)
            munmap(m_octets, m_size);
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    uchar *octets() const { return m_octets; }
    /// For the server, which gets a descriptor of its own.
    int duplicate() const { return dup(m_descriptor); }

private:
    const size_t m_size;
    const int m_descriptor;
    uchar *m_octets = nullptr;
};

/// One connection to the X server for one picture.
class RootWindow
{
public:
    RootWindow()
    {
        int number = 0;
        m_connection.reset(xcb_connect(nullptr, &number));
        if (xcb_connection_has_error(m_connection.get()))
            fail(QT_TRANSLATE_NOOP("XcbScreenSource",
                                   "The X server that shows this desktop cannot be reached."));
        auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
        for (; number > 0 && screens.rem > 1; --number)
            xcb_screen_next(&screens);
        m_screen = screens.data;
        m_size = QSize(m_screen->width_in_pixels, m_screen->height_in_pixels);
        m_layout = layout();
    }

    // Nothing where the server cannot share memory with this program: one on another computer, or behind a proxy.
    std::optional<QImage> shared()
    {
        const auto size = static_cast<size_t>(m_layout.bytesPerLine) * static_cast<size_t>(m_size.height());
        if (!canShare())
            return {};
        auto memory = std::make_unique<SharedMemory>(size);
        if (!memory->octets())
            return {};
        const xcb_shm_seg_t segment = xcb_generate_id(m_connection.get());
        constexpr bool isReadOnly = false;
        xcb_shm_attach_fd(m_connection.get(), segment, memory->duplicate(), isReadOnly);
        const auto cookie = xcb_shm_get_image(m_connection.get(), m_screen->root, 0, 0, width(), height(),
                                              ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0);
        const XcbOwned<xcb_shm_get_image_reply_t> reply(
            xcb_shm_get_image_reply(m_connection.get(), cookie, nullptr));
        if (!reply)
            return {};
        uchar *const octets = memory->octets();
        return QImage(octets, m_size.width(), m_size.height(), m_layout.bytesPerLine, m_layout.format,
                      &release, memory.release());
    }

    // Nobody may draw between two pieces, or the picture would be one of two moments.
    QImage copied()
    {
        QImage image(m_size, m_layout.format);
        if (image.isNull())
            fail(QT_TRANSLATE_NOOP("XcbScreenSource",
                                   "There is not enough memory for a picture of the screen."));
        xcb_grab_server(m_connection.get());
        const int rows = static_cast<int>(std::max<qint64>(1, pieceSize / m_layout.bytesPerLine));
        for (int top = 0; top < m_size.height(); top += rows)
            copyRows(image, top, std::min(rows, m_size.height() - top));
        return image;
    }

    // The places where a monitor shows something; the whole screen where the server does not tell.
    QRegion shown()
    {
        QRegion region;
        if (supportsMonitors()) {
            const auto cookie = xcb_randr_get_monitors(m_connection.get(), m_screen->root, true);
            const XcbOwned<xcb_randr_get_monitors_reply_t> reply(
                xcb_randr_get_monitors_reply(m_connection.get(), cookie, nullptr));
            for (auto each = monitors(reply.get()); each.rem > 0; xcb_randr_monitor_info_next(&each))
                region += QRect(each.data->x, each.data->y, each.data->width, each.data->height);
        }
        return region.isEmpty() ? QRegion(QRect(QPoint(), m_size)) : region;
    }

private:
    uint16_t width() const { return static_cast<uint16_t>(m_size.width()); }
    uint16_t height() const { return static_cast<uint16_t>(m_size.height()); }

    static void release(void *memory) { delete static_cast<SharedMemory *>(memory); }

    static xcb_randr_monitor_info_iterator_t monitors(const xcb_randr_get_monitors_reply_t *reply)
    {
        return reply ? xcb_randr_get_monitors_monitors_iterator(reply) : xcb_randr_monitor_info_iterator_t{};
    }

    bool has(xcb_extension_t &extension)
    {
        const auto *data = xcb_get_extension_data(m_connection.get(), &extension);
        return data && data->present;
    }

    // A descriptor travels through a local socket alone, and to a server that knows what to do with it.
    bool canShare()
    {
        sockaddr_storage own{};
        socklen_t size = sizeof own;
        if (getsockname(xcb_get_file_descriptor(m_connection.get()), reinterpret_cast<sockaddr *>(&own),
                        &size)
                != 0
            || own.ss_family != AF_UNIX || !has(xcb_shm_id))
            return false;
        const XcbOwned<xcb_shm_query_version_reply_t> version(xcb_shm_query_version_reply(
            m_connection.get(), xcb_shm_query_version(m_connection.get()), nullptr));
        return version
            && std::pair(version->major_version, version->minor_version)
            >= std::pair<uint16_t, uint16_t>(1, 2);
    }

    bool supportsMonitors()
    {
        if (!has(xcb_randr_id))
            return false;
        const XcbOwned<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
            m_connection.get(), xcb_randr_query_version(m_connection.get(), 1, 5), nullptr));
        return version
            && std::pair(version->major_version, version->minor_version)
            >= std::pair<uint32_t, uint32_t>(1, 5);
    }

    const xcb_visualtype_t *rootVisual() const
    {
        for (auto depth = xcb_screen_allowed_depths_iterator(m_screen); depth.rem > 0;
             xcb_depth_next(&depth)) {
            for (auto each = xcb_depth_visuals_iterator(depth.data); each.rem > 0;
                 xcb_visualtype_next(&each)) {
                if (each.data->visual_id == m_screen->root_visual)
                    return each.data;
            }
        }
        return nullptr;
    }

    PixelLayout layout() const
    {
        const xcb_setup_t *setup = xcb_get_setup(m_connection.get());
        const xcb_visualtype_t *visual = rootVisual();
        auto formats = xcb_setup_pixmap_formats_iterator(setup);
        while (formats.rem > 1 && formats.data->depth != m_screen->root_depth)
            xcb_format_next(&formats);
        const bool isOurOrder = (setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST)
            == (QSysInfo::ByteOrder == QSysInfo::LittleEndian);
        for (const KnownFormat &known : knownFormats) {
            if (isOurOrder && visual && known.bitsPerPixel == formats.data->bits_per_pixel
                && known.red == visual->red_mask && known.green == visual->green_mask
                && known.blue == visual->blue_mask) {
                const int pad = formats.data->scanline_pad;
                const int bits = (m_size.width() * known.bitsPerPixel + pad - 1) / pad * pad;
                return {known.format, known.bitsPerPixel, bits / 8};
            }
        }
        fail(QT_TRANSLATE_NOOP(
            "XcbScreenSource",
            "The colours of this screen are of a kind that cannot be captured. Set the screen to "
            "16, 24 or 30 bits per pixel."));
    }

    void copyRows(QImage &image, int top, int rows)
    {
        const auto cookie
            = xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, 0,
                            static_cast<int16_t>(top), width(), static_cast<uint16_t>(rows), ~0U);
        const XcbOwned<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection.get(), cookie, nullptr));
        if (!reply || xcb_get_image_data_length(reply.get()) < m_layout.bytesPerLine * rows)
            fail(QT_TRANSLATE_NOOP("XcbScreenSource",
                                   "The X server did not hand over the picture of the screen."));
        const QImage piece(xcb_get_image_data(reply.get()), m_size.width(), rows, m_layout.bytesPerLine,
                           m_layout.format);
        const auto octets = static_cast<size_t>(std::min(m_layout.bytesPerLine, image.bytesPerLine()));
        for (int row = 0; row < rows; ++row)
            std::memcpy(image.scanLine(top + row), piece.constScanLine(row), octets);
    }

    XcbOwned<xcb_connection_t> m_connection;
    const xcb_screen_t *m_screen = nullptr;
    QSize m_size;
    PixelLayout m_layout;
};

} // namespace

void XcbScreenSource::ask()
{
    Q_EMIT given(&XcbScreenSource::grab);
}

// A server that closes the connection over the shared memory gets a second one without.
QImage XcbScreenSource::grab()
{
    QImage image;
    QRegion shown;
    {
        RootWindow root;
        if (auto picture = root.shared()) {
            image = std::move(*picture);
            shown = root.shown();
        }
    }
    if (image.isNull()) {
        RootWindow root;
        image = root.copied();
        shown = root.shown();
    }
    image = std::move(image).convertToFormat(QImage::Format_RGB32);
    QPainter painter(&image);
    for (const QRect &dark : QRegion(image.rect()) - shown)
        painter.fillRect(dark, Qt::black);
    return image;
}

} // namespace vandrel

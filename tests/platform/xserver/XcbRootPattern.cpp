#include "tests/platform/xserver/XcbRootPattern.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace vandrel::test {

namespace {

// The longest request that every server takes is 256 KB.
constexpr int mostOctets = 200'000;

/// A connection that draws on the background of its first screen.
class Painter
{
public:
    Painter() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect)
    {
        if (isConnected())
            m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data;
    }

    bool isConnected() const { return !xcb_connection_has_error(m_connection.get()); }

    void paint(const QImage &picture)
    {
        xcb_connection_t *c = m_connection.get();
        const xcb_pixmap_t pixmap = xcb_generate_id(c);
        xcb_create_pixmap(c, m_screen->root_depth, pixmap, m_screen->root, m_screen->width_in_pixels,
                          m_screen->height_in_pixels);
        const xcb_gcontext_t context = xcb_generate_id(c);
        xcb_create_gc(c, context, pixmap, 0, nullptr);
        const int rows = std::max<int>(1, mostOctets / static_cast<int>(picture.bytesPerLine()));
        for (int top = 0; top < picture.height(); top += rows)
            paintRows(pixmap, context,
                      picture.copy(0, top, picture.width(), std::min(rows, picture.height() - top)), top);
        xcb_change_window_attributes(c, m_screen->root, XCB_CW_BACK_PIXMAP, &pixmap);
        xcb_clear_area(c, 0, m_screen->root, 0, 0, 0, 0);
    }

    // All that was asked for has been done once an answer comes.
    bool finish()
    {
        xcb_connection_t *c = m_connection.get();
        std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        return isConnected();
    }

private:
    void paintRows(xcb_pixmap_t pixmap, xcb_gcontext_t context, const QImage &rows, int top)
    {
        xcb_put_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context,
                      static_cast<uint16_t>(rows.width()), static_cast<uint16_t>(rows.height()), 0,
                      static_cast<int16_t>(top), 0, m_screen->root_depth,
                      static_cast<uint32_t>(rows.sizeInBytes()), rows.constBits());
    }

    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t *)> m_connection;
    const xcb_screen_t *m_screen = nullptr;
};

} // namespace

bool paintRoot(const QImage &picture)
{
    Painter painter;
    if (!painter.isConnected())
        return false;
    painter.paint(picture.convertToFormat(QImage::Format_RGB32));
    return painter.finish();
}

QImage pattern(const QSize &size)
{
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            picture.setPixel(x, y, qRgb(x & 0xff, y & 0xff, (x * 7 + y * 13) & 0xff));
    }
    return picture;
}

} // namespace vandrel::test

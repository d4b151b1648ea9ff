#include "platform/display/XcbRandrScreen.h"

#include <algorithm>
#include <cmath>

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include "platform/xcb/XcbOwned.h"

namespace vandrel {

namespace {

using Resources = XcbOwned<xcb_randr_get_screen_resources_current_reply_t>;
using Controller = XcbOwned<xcb_randr_get_crtc_info_reply_t>;

// In pictures a second, however the monitor draws its lines.
double frequency(const xcb_randr_mode_info_t &mode)
{
    double lines = mode.vtotal;
    if (mode.mode_flags & XCB_RANDR_MODE_FLAG_DOUBLE_SCAN)
        lines *= 2;
    if (mode.mode_flags & XCB_RANDR_MODE_FLAG_INTERLACE)
        lines /= 2;
    const double dots = mode.htotal * lines;
    return dots > 0 ? mode.dot_clock / dots : 0;
}

QList<RandrMode> allModes(const Resources &resources)
{
    QList<RandrMode> modes;
    for (auto each = xcb_randr_get_screen_resources_current_modes_iterator(resources.get()); each.rem > 0;
         xcb_randr_mode_info_next(&each))
        modes.append({each.data->id, QSize(each.data->width, each.data->height), frequency(*each.data)});
    return modes;
}

QSize sizeOf(quint32 id, const QList<RandrMode> &modes)
{
    const auto found
        = std::find_if(modes.begin(), modes.end(), [id](const RandrMode &mode) { return mode.id == id; });
    return found == modes.end() ? QSize() : found->size;
}

RandrPicture
pictureOf(quint32 controller, const xcb_randr_get_crtc_info_reply_t &info, const QList<RandrMode> &modes)
{
    RandrPicture picture;
    picture.controller = controller;
    picture.mode = info.mode;
    picture.modeSize = sizeOf(info.mode, modes);
    picture.area = QRect(info.x, info.y, info.width, info.height);
    picture.isUpright = info.rotation & (XCB_RANDR_ROTATION_ROTATE_90 | XCB_RANDR_ROTATION_ROTATE_270);
    return picture;
}

} // namespace

class XcbRandrScreen::Private
{
public:
    Private() : c(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(c.get()))
            return;
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(c.get())).data;
        root = screen->root;
        dotsPerMillimetre = screen->width_in_millimeters > 0
            ? double(screen->width_in_pixels) / screen->width_in_millimeters
            : usualDots;
        canAsk = hasVersion();
    }

    bool hasVersion() const
    {
        const auto *extension = xcb_get_extension_data(c.get(), &xcb_randr_id);
        if (!extension || !extension->present)
            return false;
        const XcbOwned<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(c.get(), xcb_randr_query_version(c.get(), 1, 3), nullptr));
        return version && (version->major_version > 1 || version->minor_version >= 3);
    }

    Resources resources() const
    {
        return Resources(xcb_randr_get_screen_resources_current_reply(
            c.get(), xcb_randr_get_screen_resources_current(c.get(), root), nullptr));
    }

    Controller controller(quint32 id) const
    {
        return Controller(xcb_randr_get_crtc_info_reply(
            c.get(), xcb_randr_get_crtc_info(c.get(), id, XCB_CURRENT_TIME), nullptr));
    }

    XcbOwned<xcb_randr_get_output_info_reply_t> output(quint32 id) const
    {
        return XcbOwned<xcb_randr_get_output_info_reply_t>(xcb_randr_get_output_info_reply(
            c.get(), xcb_randr_get_output_info(c.get(), id, XCB_CURRENT_TIME), nullptr));
    }

    // The screen's own size and what it may be; false where the server does not tell.
    bool fillSizes(RandrState &state) const
    {
        const XcbOwned<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(c.get(), xcb_get_geometry(c.get(), root), nullptr));
        const XcbOwned<xcb_randr_get_screen_size_range_reply_t> range(xcb_randr_get_screen_size_range_reply(
            c.get(), xcb_randr_get_screen_size_range(c.get(), root), nullptr));
        if (!geometry || !range)
            return false;
        state.size = QSize(geometry->width, geometry->height);
        state.smallest = QSize(range->min_width, range->min_height);
        state.largest = QSize(range->max_width, range->max_height);
        return true;
    }

    // The primary output, or where none is named or it is off, the first that shows a picture.
    quint32 primaryOutput(const RandrState &state) const
    {
        const XcbOwned<xcb_randr_get_output_primary_reply_t> named(xcb_randr_get_output_primary_reply(
            c.get(), xcb_randr_get_output_primary(c.get(), root), nullptr));
        if (named && named->output != XCB_NONE) {
            const auto info = output(named->output);
            if (info && info->crtc != XCB_NONE)
                return named->output;
        }
        for (const RandrPicture &picture : state.pictures) {
            const Controller info = controller(picture.controller);
            if (info && xcb_randr_get_crtc_info_outputs_length(info.get()) > 0)
                return *xcb_randr_get_crtc_info_outputs(info.get());
        }
        return XCB_NONE;
    }

    void fillPrimary(RandrState &state, const QList<RandrMode> &modes) const
    {
        const quint32 id = primaryOutput(state);
        const auto info = id != XCB_NONE ? output(id) : nullptr;
        if (!info)
            return;
        for (qsizetype i = 0; i < state.pictures.size(); ++i) {
            if (state.pictures[i].controller == info->crtc)
                state.primary = i;
        }
        const xcb_randr_mode_t *offered = xcb_randr_get_output_info_modes(info.get());
        const int count = xcb_randr_get_output_info_modes_length(info.get());
        for (const RandrMode &mode : modes) {
            if (std::find(offered, offered + count, mode.id) != offered + count)
                state.modes.append(mode);
        }
    }

    static constexpr double usualDots = 96 / 25.4;

    const XcbOwned<xcb_connection_t> c;
    xcb_window_t root = XCB_NONE;
    double dotsPerMillimetre = usualDots;
    /// Whether there is a server that knows the extension.
    bool canAsk = false;
};

XcbRandrScreen::XcbRandrScreen() : d(std::make_unique<Private>()) { }

XcbRandrScreen::~XcbRandrScreen() = default;

std::optional<RandrState> XcbRandrScreen::state()
{
    RandrState state;
    const Resources resources = d->canAsk ? d->resources() : nullptr;
    if (!resources || !d->fillSizes(state))
        return {};
    const QList<RandrMode> modes = allModes(resources);
    const xcb_randr_crtc_t *controllers = xcb_randr_get_screen_resources_current_crtcs(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_crtcs_length(resources.get()); ++i) {
        const Controller info = d->controller(controllers[i]);
        if (info && info->mode != XCB_NONE)
            state.pictures.append(pictureOf(controllers[i], *info, modes));
    }
    d->fillPrimary(state, modes);
    return state;
}

void XcbRandrScreen::hold()
{
    xcb_grab_server(d->c.get());
}

void XcbRandrScreen::release()
{
    xcb_ungrab_server(d->c.get());
    xcb_flush(d->c.get());
}

bool XcbRandrScreen::resize(const QSize &size)
{
    const auto millimetres
        = [this](int pixels) { return static_cast<uint32_t>(std::lround(pixels / d->dotsPerMillimetre)); };
    const auto cookie = xcb_randr_set_screen_size_checked(
        d->c.get(), d->root, static_cast<uint16_t>(size.width()), static_cast<uint16_t>(size.height()),
        millimetres(size.width()), millimetres(size.height()));
    const XcbOwned<xcb_generic_error_t> error(xcb_request_check(d->c.get(), cookie));
    return !error && !xcb_connection_has_error(d->c.get());
}

bool XcbRandrScreen::setMode(quint32 controller, quint32 mode)
{
    const Resources resources = d->resources();
    const Controller info = d->controller(controller);
    if (!resources || !info)
        return false;
    const auto cookie = xcb_randr_set_crtc_config(
        d->c.get(), controller, XCB_CURRENT_TIME, resources->config_timestamp, info->x, info->y, mode,
        info->rotation, static_cast<uint32_t>(xcb_randr_get_crtc_info_outputs_length(info.get())),
        xcb_randr_get_crtc_info_outputs(info.get()));
    const XcbOwned<xcb_randr_set_crtc_config_reply_t> reply(
        xcb_randr_set_crtc_config_reply(d->c.get(), cookie, nullptr));
    return reply && reply->status == XCB_RANDR_SET_CONFIG_SUCCESS;
}

} // namespace vandrel

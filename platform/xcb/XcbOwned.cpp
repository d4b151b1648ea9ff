#include "platform/xcb/XcbOwned.h"

#include <cstdlib>

#include <xcb/xcb.h>

namespace vandrel {

void XcbRelease::operator()(void *reply) const
{
    std::free(reply);
}

void XcbRelease::operator()(xcb_connection_t *connection) const
{
    xcb_disconnect(connection);
}

} // namespace vandrel

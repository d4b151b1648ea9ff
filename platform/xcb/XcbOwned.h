#pragma once

#include <memory>

struct xcb_connection_t;

namespace vandrel {

/// Gives back what the X server's library has handed out.
struct XcbRelease {
    void operator()(void *reply) const;
    void operator()(xcb_connection_t *connection) const;
};

/// A reply, or the connection itself, given back with its holder.
template<typename Reply>
using XcbOwned = std::unique_ptr<Reply, XcbRelease>;

} // namespace vandrel

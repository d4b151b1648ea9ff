#pragma once

#include <functional>
#include <memory>

#include "platform/display/WlrState.h"

namespace vandrel {

/// What a compositor says to a change.
enum class WlrAnswer {
    Done,
    Refused,
    /// The monitors have changed meanwhile, so that it was not looked at.
    Outdated,
    /// Nothing within five seconds, or the connection has ended.
    None
};

/// The monitors of the compositor that WAYLAND_DISPLAY names, by zwlr_output_manager_v1, on a connection of its own.
/// Each call may take five seconds where the compositor does not answer.
class WlrOutputs
{
public:
    WlrOutputs();
    ~WlrOutputs();
    WlrOutputs(const WlrOutputs &) = delete;
    WlrOutputs &operator=(const WlrOutputs &) = delete;

    /// Whether there is a compositor, and it offers the interface.
    bool isThere() const;
    /// What has been told so far.
    WlrState state() const;

    /// Asks whether that monitor could have that mode.
    WlrAnswer test(const QString &head, const WlrMode &mode);
    /// Gives it the mode. Nothing else is changed.
    WlrAnswer apply(const QString &head, const WlrMode &mode);

    /// Reads what the compositor tells until that is so, for five seconds at most; whether it is so.
    bool await(const std::function<bool()> &isSo);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace vandrel

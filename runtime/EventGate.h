#pragma once

#include <functional>

#include <QObject>

namespace vandrel {

/// The one gate through which controls raise their events. While a message box or an input box is open the
/// gate is held and events wait in the order they were raised; when it opens again they are delivered from
/// the event loop, one after the other, until one of their handlers opens a box again.
///
/// User-interface thread only.
class EventGate
{
public:
    /// Delivers `event` from the event loop, never from inside this call, in order with all others. Dropped
    /// when `sender` is destroyed first. A control calls it as
    /// `EventGate::raise(this, [this] { Q_EMIT StatusText(text); });`
    static void raise(QObject *sender, std::function<void()> event);

    /// True while a Hold exists.
    static bool isHeld();

    /// Holds the gate for its lifetime. Holds nest.
    class Hold
    {
    public:
        Hold();
        ~Hold();
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;
    };
};

} // namespace vandrel

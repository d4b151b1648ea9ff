#pragma once

#include <QDeadlineTimer>

#include "platform/ping/EchoWay.h"

namespace vandrel {

/// Waits for a descriptor to become readable, in turns short enough for the windows to go on painting. Turns are
/// passed however busy the descriptor is.
class ReadinessWait
{
public:
    enum class Result { Ready, TimedOut, Cancelled };

    ReadinessWait(int descriptor, int milliseconds, EchoPause &pause);

    Result next();

private:
    const int m_descriptor;
    const QDeadlineTimer m_end;
    QDeadlineTimer m_turn;
    EchoPause &m_pause;
    bool m_lookedLast = false;
};

/// Closes a descriptor with its owner.
class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) { }
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    operator int() const { return m_descriptor; } // NOLINT(google-explicit-constructor)

private:
    const int m_descriptor;
};

} // namespace vandrel

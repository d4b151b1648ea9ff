#include "platform/ping/PosixReadiness.h"

#include <algorithm>

#include <poll.h>
#include <unistd.h>

namespace vandrel {

namespace {

// How long the windows may stand still, in milliseconds: nobody sees that.
constexpr int turnLength = 20;

} // namespace

ReadinessWait::ReadinessWait(int descriptor, int milliseconds, EchoPause &pause)
    : m_descriptor(descriptor), m_end(milliseconds, Qt::PreciseTimer), m_turn(turnLength, Qt::PreciseTimer),
      m_pause(pause)
{ }

// What has come in time counts even where painting made the look at it late: there is one look after the end, and no
// second, however much goes on arriving.
ReadinessWait::Result ReadinessWait::next()
{
    while (!m_lookedLast) {
        if (m_turn.hasExpired()) {
            if (!m_pause.passTurn())
                return Result::Cancelled;
            m_turn.setRemainingTime(turnLength, Qt::PreciseTimer);
        }
        m_lookedLast = m_end.hasExpired();
        const qint64 slice = std::min(m_end.remainingTime(), m_turn.remainingTime());
        pollfd waited{m_descriptor, POLLIN, 0};
        // An interruption by a signal is a short wait like any other.
        if (poll(&waited, 1, static_cast<int>(slice)) > 0)
            return Result::Ready;
    }
    return Result::TimedOut;
}

Descriptor::~Descriptor()
{
    if (isOpen())
        close(m_descriptor);
}

} // namespace vandrel

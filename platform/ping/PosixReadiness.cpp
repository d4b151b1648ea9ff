#include "platform/ping/PosixReadiness.h"

#include <algorithm>

#include <poll.h>
#include <unistd.h>

namespace vandrel {

namespace {

// How long the windows may stand still, in milliseconds: nobody sees that.
constexpr int turnLength = 20;
// After what time without a reply they paint for the first time: what happened before the wait is shown while it lasts.
constexpr int firstTurn = 2;
constexpr qint64 nanosecondsPerSecond = 1'000'000'000;

} // namespace

ReadinessWait::ReadinessWait(int descriptor, int milliseconds, EchoPause &pause)
    : m_descriptor(descriptor), m_end(milliseconds, Qt::PreciseTimer), m_turn(firstTurn, Qt::PreciseTimer),
      m_pause(pause)
{ }

// What has come in time counts even where painting made the look at it late: there is one look after the end, and no
// second, however much goes on arriving.
ReadinessWait::Result ReadinessWait::next()
{
    while (!m_lookedLast) {
        m_lookedLast = m_end.hasExpired();
        // At the end the windows can wait for whoever waits here.
        if (!m_lookedLast && m_turn.hasExpired()) {
            if (!m_pause.passTurn())
                return Result::Cancelled;
            m_turn.setRemainingTime(turnLength, Qt::PreciseTimer);
        }
        // To the nanosecond: what a scan adds to each wait is felt as many times as it has addresses.
        const qint64 slice = std::min(m_end.remainingTimeNSecs(), m_turn.remainingTimeNSecs());
        const timespec time{static_cast<time_t>(slice / nanosecondsPerSecond), slice % nanosecondsPerSecond};
        pollfd waited{m_descriptor, POLLIN, 0};
        // An interruption by a signal is a short wait like any other.
        if (ppoll(&waited, 1, &time, nullptr) > 0)
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

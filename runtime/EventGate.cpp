#include "runtime/EventGate.h"

#include <deque>
#include <utility>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QPointer>
#include <QTimer>

#include "runtime/Events.h"

namespace vandrel {

namespace {

// A flood of events must not keep the window from painting and from the user's hands: after this many
// milliseconds the rest waits for the next turn of the event loop.
constexpr qint64 longestTurn = 8;

struct PendingEvent {
    QPointer<QObject> sender;
    std::function<void()> deliver;
};

struct Gate {
    int holds = 0;
    std::deque<PendingEvent> pending;
    // The application whose event loop has a turn of deliveries ahead. A turn dies with its application, and
    // the next application gets one of its own.
    QPointer<QCoreApplication> turnAhead;
};

Gate &gate()
{
    static Gate instance;
    return instance;
}

bool isOpen(const Gate &gate)
{
    return gate.holds == 0 && !gate.pending.empty();
}

void deliverInTurn();

void scheduleTurn()
{
    Gate &g = gate();
    if (g.turnAhead || !isOpen(g))
        return;
    g.turnAhead = QCoreApplication::instance();
    if (g.turnAhead)
        QTimer::singleShot(0, g.turnAhead.data(), &deliverInTurn);
}

// The next turn is scheduled before the handler runs: a handler may run an event loop of its own, and the
// events behind it must arrive there.
void deliverFirst()
{
    Gate &g = gate();
    const PendingEvent first = std::move(g.pending.front());
    g.pending.pop_front();
    scheduleTurn();
    if (first.sender)
        guarded(first.deliver);
}

void deliverInTurn()
{
    Gate &g = gate();
    g.turnAhead.clear();
    const QDeadlineTimer end(longestTurn);
    while (isOpen(g) && !end.hasExpired())
        deliverFirst();
    scheduleTurn();
}

} // namespace

void EventGate::raise(QObject *sender, std::function<void()> event)
{
    gate().pending.push_back({sender, std::move(event)});
    scheduleTurn();
}

bool EventGate::isHeld()
{
    return gate().holds > 0;
}

EventGate::Hold::Hold()
{
    ++gate().holds;
}

EventGate::Hold::~Hold()
{
    --gate().holds;
    scheduleTurn();
}

} // namespace vandrel

#include "runtime/EventGate.h"

#include <deque>

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

#include "runtime/Events.h"

namespace vandrel {

namespace {

struct PendingEvent {
    QPointer<QObject> sender;
    std::function<void()> deliver;
};

struct Gate {
    int holds = 0;
    bool deliveryPosted = false;
    std::deque<PendingEvent> pending;
};

Gate &gate()
{
    static Gate instance;
    return instance;
}

void postDelivery();

void deliverOne()
{
    Gate &g = gate();
    g.deliveryPosted = false;
    if (g.holds > 0 || g.pending.empty())
        return;
    const PendingEvent next = std::move(g.pending.front());
    g.pending.pop_front();
    postDelivery();
    if (next.sender)
        guarded(next.deliver);
}

void postDelivery()
{
    Gate &g = gate();
    if (g.deliveryPosted || g.holds > 0 || g.pending.empty())
        return;
    g.deliveryPosted = true;
    QMetaObject::invokeMethod(QCoreApplication::instance(), &deliverOne, Qt::QueuedConnection);
}

} // namespace

void EventGate::raise(QObject *sender, std::function<void()> event)
{
    gate().pending.push_back({sender, std::move(event)});
    postDelivery();
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
    if (--gate().holds == 0)
        postDelivery();
}

} // namespace vandrel

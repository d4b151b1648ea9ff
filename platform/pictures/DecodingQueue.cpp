#include "platform/pictures/DecodingQueue.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace vandrel {

namespace {

unsigned cores()
{
    return std::max(1U, std::thread::hardware_concurrency());
}

} // namespace

DecodingQueue::DecodingQueue(Done done) : m_done(std::move(done)) { }

void DecodingQueue::add(const Ticket &ticket)
{
    const std::lock_guard lock(m_mutex);
    (ticket->isSeen ? m_seen : m_waiting).push_back(ticket);
    wake();
}

// It stays in the other queue too, where it is passed over.
void DecodingQueue::promote(const Ticket &ticket)
{
    const std::lock_guard lock(m_mutex);
    m_seen.push_back(ticket);
    wake();
}

void DecodingQueue::setRoom(bool hasRoom)
{
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_hasRoom, hasRoom) != hasRoom && hasRoom)
        wake();
}

void DecodingQueue::delivered()
{
    const std::lock_guard lock(m_mutex);
    --m_underWay;
    wake();
}

bool DecodingQueue::mayDecodeUnseen() const
{
    return m_hasRoom && m_underWay < 2 * cores();
}

void DecodingQueue::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_seen.clear();
        m_waiting.clear();
    }
    const std::lock_guard lock(m_doneMutex);
    m_done = nullptr;
}

void DecodingQueue::wake()
{
    const std::size_t open = m_seen.size() + (mayDecodeUnseen() ? m_waiting.size() : 0);
    while (m_workers < cores() && m_workers < open) {
        ++m_workers;
        std::thread([self = shared_from_this()] { self->work(); }).detach();
    }
}

void DecodingQueue::work()
{
    while (const Ticket ticket = next()) {
        const ReadPicture picture = decode(*ticket);
        if (!hand(ticket, picture))
            delivered();
    }
}

bool DecodingQueue::hand(const Ticket &ticket, const ReadPicture &picture)
{
    const std::lock_guard lock(m_doneMutex);
    if (!m_done || ticket->isCancelled)
        return false;
    m_done(ticket, picture);
    return true;
}

DecodingQueue::Ticket DecodingQueue::next()
{
    const std::lock_guard lock(m_mutex);
    Ticket ticket = take(m_seen, true);
    if (!ticket && mayDecodeUnseen())
        ticket = take(m_waiting, false);
    if (ticket)
        ++m_underWay;
    else
        --m_workers;
    return ticket;
}

// A ticket can stand in both queues; the one it is taken from first keeps it from the other.
DecodingQueue::Ticket DecodingQueue::take(std::deque<Ticket> &from, bool seen)
{
    while (!from.empty()) {
        Ticket ticket = std::move(from.front());
        from.pop_front();
        if (ticket->isCancelled || ticket->isTaken)
            continue;
        if (seen && !ticket->isSeen) {
            m_waiting.push_front(std::move(ticket));
            continue;
        }
        ticket->isTaken = true;
        return ticket;
    }
    return nullptr;
}

ReadPicture DecodingQueue::decode(const DecodingTicket &ticket)
{
    return readPicture(ticket.nativePath, ticket.shownPath, ticket.wish,
                       [&ticket] { return ticket.isCancelled.load(); });
}

} // namespace vandrel

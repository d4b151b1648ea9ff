#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include <QByteArray>
#include <QImage>
#include <QString>

#include "platform/pictures/PictureReader.h"

namespace vandrel {

/// One picture file to be decoded.
struct DecodingTicket {
    QByteArray nativePath;
    QString shownPath;
    PictureWish wish;
    /// Decoded before those that nobody sees.
    std::atomic<bool> isSeen{false};
    /// Nobody waits for it any more.
    std::atomic<bool> isCancelled{false};
    /// A thread has it. The queue's own.
    bool isTaken = false;
};

/// Decodes pictures on as many threads as the computer has cores, those that are seen first, and else in the order they
/// came. Threads live as long as there is something to do. Usable from any thread; always held by a shared pointer,
/// which the threads hold as well: one that a file system never answers is left to itself.
class DecodingQueue : public std::enable_shared_from_this<DecodingQueue>
{
public:
    using Ticket = std::shared_ptr<DecodingTicket>;
    /// Called on a decoding thread.
    using Done = std::function<void(const Ticket &ticket, const ReadPicture &picture)>;

    /// `done` gets each decoded picture, null for an unreadable one, but none that was cancelled.
    explicit DecodingQueue(Done done);

    void add(const Ticket &ticket);
    /// To be called when a ticket that was added has come to be seen.
    void promote(const Ticket &ticket);
    /// Whether there is room for pictures that nobody sees; those wait until there is.
    void setRoom(bool hasRoom);
    /// A picture that `done` got has been put away. Only a few may be on their way, however slow who takes them is.
    void delivered();
    /// No more calls of `done` begin, and those that run have ended on return.
    void stop();

private:
    void wake();
    void work();
    Ticket next();
    Ticket take(std::deque<Ticket> &from, bool seen);
    bool mayDecodeUnseen() const;
    bool hand(const Ticket &ticket, const ReadPicture &picture);
    static ReadPicture decode(const DecodingTicket &ticket);

    std::mutex m_mutex;
    std::mutex m_doneMutex;
    Done m_done;
    std::deque<Ticket> m_seen;
    std::deque<Ticket> m_waiting;
    bool m_hasRoom = true;
    unsigned m_workers = 0;
    /// Taken by a thread and not delivered yet.
    unsigned m_underWay = 0;
};

} // namespace vandrel

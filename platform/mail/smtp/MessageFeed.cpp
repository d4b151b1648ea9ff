#include "platform/mail/smtp/MessageFeed.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>

#include "controls/DriveView.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

// Shared by the feed and its thread; whichever ends last takes it away.
class MessageFeed::Worker : public std::enable_shared_from_this<Worker>
{
public:
    explicit Worker(MessageFeed &feed) : m_feed(&feed) { }

    void start(const MailDraft &draft, const std::shared_ptr<const DriveView> &drives)
    {
        try {
            std::thread([self = shared_from_this(), draft, drives] { self->run(draft, *drives); }).detach();
        } catch (const std::system_error &) {
            post([](MessageFeed &feed) { Q_EMIT feed.failed(runtimeErrorText(error::OutOfMemory)); });
        }
    }

    void request()
    {
        const std::lock_guard lock(m_mutex);
        ++m_requests;
        m_change.notify_one();
    }

    // From here on nothing reaches the feed any more.
    void leave()
    {
        const std::lock_guard lock(m_mutex);
        m_feed = nullptr;
        m_change.notify_one();
    }

private:
    void run(const MailDraft &draft, const DriveView &drives)
    {
        try {
            OutgoingMail mail(draft, drives);
            const MailEnvelope envelope{mail.sender(), mail.recipients(), mail.size()};
            post([envelope](MessageFeed &feed) { Q_EMIT feed.prepared(envelope); });
            serve(mail);
        } catch (const RuntimeError &failure) {
            post([text = failure.text()](MessageFeed &feed) { Q_EMIT feed.failed(text); });
        } catch (const std::bad_alloc &) {
            const QString text = runtimeErrorText(error::OutOfMemory);
            post([text](MessageFeed &feed) { Q_EMIT feed.failed(text); });
        }
    }

    void serve(OutgoingMail &mail)
    {
        DotStuffing dots;
        while (awaitRequest()) {
            const QByteArray octets = mail.next();
            if (octets.isEmpty()) {
                post([](MessageFeed &feed) { Q_EMIT feed.ended(); });
                return;
            }
            post([block = dots.stuffed(octets)](MessageFeed &feed) { Q_EMIT feed.block(block); });
        }
    }

    // False when the feed is gone.
    bool awaitRequest()
    {
        std::unique_lock lock(m_mutex);
        m_change.wait(lock, [this] { return !m_feed || m_requests > 0; });
        --m_requests;
        return m_feed != nullptr;
    }

    void post(const std::function<void(MessageFeed &)> &event)
    {
        const std::lock_guard lock(m_mutex);
        if (m_feed)
            QMetaObject::invokeMethod(
                m_feed, [feed = m_feed, event] { event(*feed); }, Qt::QueuedConnection);
    }

    std::mutex m_mutex;
    std::condition_variable m_change;
    MessageFeed *m_feed;
    int m_requests = 0;
};

std::vector<MailAddress> MailEnvelope::outsideAscii() const
{
    std::vector<MailAddress> addresses;
    if (sender.needsUtf8())
        addresses.push_back(sender);
    for (const MailAddress &recipient : recipients) {
        if (recipient.needsUtf8())
            addresses.push_back(recipient);
    }
    return addresses;
}

MessageFeed::MessageFeed(QObject *parent) : QObject(parent), m_worker(std::make_shared<Worker>(*this)) { }

MessageFeed::~MessageFeed()
{
    m_worker->leave();
}

void MessageFeed::prepare(const MailDraft &draft, const std::shared_ptr<const DriveView> &drives)
{
    m_worker->start(draft, drives);
}

void MessageFeed::request()
{
    m_worker->request();
}

QByteArray DotStuffing::stuffed(const QByteArray &block)
{
    QByteArray result;
    qsizetype copied = 0;
    if (m_lineBegins && block.startsWith('.'))
        result += '.';
    for (qsizetype at = block.indexOf("\n."); at >= 0; at = block.indexOf("\n.", at + 2)) {
        result += QByteArrayView(block).sliced(copied, at + 1 - copied);
        result += '.';
        copied = at + 1;
    }
    if (!block.isEmpty())
        m_lineBegins = block.endsWith('\n');
    if (result.isEmpty())
        return block;
    result += QByteArrayView(block).sliced(copied);
    return result;
}

} // namespace vandrel

#include "platform/mail/pop/MailSpool.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <QDir>

namespace vandrel {

void MailSpool::add(QByteArrayView octets)
{
    const std::lock_guard lock(m_mutex);
    if (m_discarded)
        return;
    m_waiting.append(octets.data(), octets.size());
    m_change.notify_one();
}

void MailSpool::finish()
{
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_change.notify_one();
}

void MailSpool::discard()
{
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_discarded = true;
    m_waiting = QByteArray();
    m_change.notify_one();
}

QByteArray MailSpool::take()
{
    std::unique_lock lock(m_mutex);
    m_change.wait(lock, [this] { return m_ended || !m_waiting.isEmpty(); });
    return std::exchange(m_waiting, QByteArray());
}

SpooledMail::File::File() : QTemporaryFile(QDir::tempPath() + QStringLiteral("/vandrel-mail")) { }

SpooledMail::SpooledMail(std::shared_ptr<MailSpool> spool, qint64 inMemory)
    : m_spool(std::move(spool)), m_inMemory(inMemory)
{
    open(ReadOnly | Unbuffered);
}

qint64 SpooledMail::readData(char *data, qint64 most)
{
    const qint64 from = pos();
    if (!waitFor(from))
        return 0;
    const qint64 memoryFrom = m_file ? m_kept - m_memory.size() : 0;
    const qint64 count = std::min(most, m_kept - from);
    if (from >= memoryFrom) {
        std::memcpy(data, m_memory.constData() + (from - memoryFrom), static_cast<std::size_t>(count));
        return count;
    }
    return m_file->seek(from) ? m_file->read(data, count) : -1;
}

qint64 SpooledMail::writeData(const char *, qint64)
{
    return -1;
}

// False when the mail ends before that position.
bool SpooledMail::waitFor(qint64 position)
{
    while (position >= m_kept && !m_ended) {
        const QByteArray octets = m_spool->take();
        m_ended = octets.isEmpty();
        if (!m_ended)
            keep(octets);
    }
    return position < m_kept;
}

void SpooledMail::keep(const QByteArray &octets)
{
    if (m_file || m_memory.size() + octets.size() > m_inMemory)
        moveToFile(octets);
    else
        m_memory += octets;
    m_kept += m_ended ? 0 : octets.size();
}

void SpooledMail::moveToFile(const QByteArray &more)
{
    if (!m_file) {
        m_file = std::make_unique<File>();
        if (!m_file->openForBoth() || m_file->write(m_memory) != m_memory.size()) {
            fail();
            return;
        }
    }
    if (!m_file->seek(m_kept) || m_file->write(more) != more.size()) {
        fail();
        return;
    }
    // Whoever reads from the beginning to the end wants these next.
    m_memory = more;
}

void SpooledMail::fail()
{
    m_problem = m_file->errorString();
    m_spool->discard();
    m_ended = true;
    m_memory = QByteArray();
    m_kept = 0;
}

} // namespace vandrel

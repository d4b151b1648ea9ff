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

void MailSpool::take(QByteArray &octets)
{
    octets.resize(0);
    std::unique_lock lock(m_mutex);
    m_change.wait(lock, [this] { return m_ended || !m_waiting.isEmpty(); });
    m_waiting.swap(octets);
}

SpooledMail::File::File() : QTemporaryFile(QDir::tempPath() + QStringLiteral("/vandrel-mail")) { }

SpooledMail::SpooledMail(std::shared_ptr<MailSpool> spool, qint64 inMemory)
    : m_spool(std::move(spool)), m_inMemory(inMemory)
{
    open(ReadOnly | Unbuffered);
}

void SpooledMail::keepOnlyTo(qint64 offset)
{
    m_keptTo = offset;
}

void SpooledMail::keepAgain()
{
    m_keptTo.reset();
}

qint64 SpooledMail::readData(char *data, qint64 most)
{
    const qint64 from = pos();
    if (!waitFor(from))
        return 0;
    const qint64 latestFrom = m_come - m_latest.size();
    const qint64 count = std::min(most, endOfReadable(from) - from);
    if (from >= latestFrom)
        std::memcpy(data, m_latest.constData() + (from - latestFrom), static_cast<std::size_t>(count));
    else if (from < m_beginning.size())
        std::memcpy(data, m_beginning.constData() + from, static_cast<std::size_t>(count));
    else if (count > 0)
        return m_file->seek(from) ? m_file->read(data, count) : -1;
    return count;
}

qint64 SpooledMail::writeData(const char *, qint64)
{
    return -1;
}

// False when the mail ends before that position.
bool SpooledMail::waitFor(qint64 position)
{
    while (position >= m_come && !m_ended)
        takeMore();
    return position < m_come;
}

// How far can be read from a position in one go, which is that position where the octets there were left out.
qint64 SpooledMail::endOfReadable(qint64 position) const
{
    const qint64 latestFrom = m_come - m_latest.size();
    if (position >= latestFrom)
        return m_come;
    if (position < m_beginning.size())
        return m_beginning.size();
    const auto next = std::find_if(m_leftOut.begin(), m_leftOut.end(),
                                   [position](Range range) { return range.end > position; });
    return next == m_leftOut.end() ? latestFrom : std::max(position, next->begin);
}

void SpooledMail::takeMore()
{
    putLatestAway();
    if (m_ended)
        return;
    m_spool->take(m_latest);
    m_ended = m_latest.isEmpty();
    m_come += m_latest.size();
}

// Everything of the latest octets has been read by now, so that it is known whether they are needed again.
void SpooledMail::putLatestAway()
{
    const qint64 from = m_come - m_latest.size();
    if (m_latest.isEmpty())
        return;
    if (m_beginning.isEmpty() && m_come <= m_inMemory)
        m_beginning.swap(m_latest);
    else if (m_come <= m_inMemory && m_beginning.size() == from)
        m_beginning += m_latest;
    else if (m_keptTo && *m_keptTo <= from)
        leaveOut({from, m_come});
    else
        writeLatest();
}

void SpooledMail::leaveOut(Range octets)
{
    if (!m_leftOut.empty() && m_leftOut.back().end == octets.begin)
        m_leftOut.back().end = octets.end;
    else
        m_leftOut.push_back(octets);
}

void SpooledMail::writeLatest()
{
    if (!m_file) {
        m_file = std::make_unique<File>();
        if (!m_file->openForBoth()) {
            fail();
            return;
        }
    }
    if (!m_file->seek(m_come - m_latest.size()) || m_file->write(m_latest) != m_latest.size())
        fail();
    else
        m_writtenToFile += m_latest.size();
}

void SpooledMail::fail()
{
    m_problem = m_file->errorString();
    m_spool->discard();
    m_ended = true;
    m_beginning = QByteArray();
    m_latest = QByteArray();
    m_come = 0;
}

} // namespace vandrel

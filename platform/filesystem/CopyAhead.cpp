#include "platform/filesystem/CopyAhead.h"

#include <system_error>
#include <utility>

namespace vandrel {

namespace {

// Of small files, so that what is copied ahead is no more than some megabytes, and open files no more than these.
constexpr std::size_t mostAhead = 32;

} // namespace

bool CopyAhead::mayMake() const
{
    return !m_waitsForBatch && m_slots.size() < mostAhead
        && m_first + static_cast<int>(m_slots.size()) < m_count;
}

void CopyAhead::makeNext(Lock &lock)
{
    const int index = m_first + static_cast<int>(m_slots.size());
    const int drops = m_drops;
    m_slots.emplace_back();
    ++m_making;
    lock.unlock();
    std::unique_ptr<PreparedCopy> copy = m_make(index);
    lock.lock();
    if (drops == m_drops) {
        m_waitsForBatch = m_waitsForBatch || !copy;
        m_slots[static_cast<std::size_t>(index - m_first)] = {std::move(copy), true};
    }
    copy.reset();
    --m_making;
    m_changed.notify_all();
}

// What is still being made would take room on the disk until it is done.
void CopyAhead::forget(Lock &lock)
{
    m_slots.clear();
    m_waitsForBatch = true;
    ++m_drops;
    m_changed.wait(lock, [this] { return m_making == 0; });
}

// Where there can be no further thread, the batch does everything.
bool CopyAhead::start()
{
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

void CopyAhead::run()
{
    Lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isStopping || mayMake(); });
        if (m_isStopping)
            return;
        makeNext(lock);
    }
}

std::unique_ptr<PreparedCopy> CopyAhead::take(int index)
{
    Lock lock(m_mutex);
    // A single file is not worth a thread.
    if (!m_thread.joinable() && (m_count == 1 || !start()))
        return nullptr;
    if (m_slots.empty()) {
        m_first = index;
        m_waitsForBatch = false;
        m_changed.notify_all();
    }
    while (m_slots.empty() || !m_slots.front().isMade) {
        if (mayMake())
            makeNext(lock);
        else
            m_changed.wait(lock);
    }
    std::unique_ptr<PreparedCopy> copy = std::move(m_slots.front().copy);
    m_slots.pop_front();
    ++m_first;
    if (!copy)
        forget(lock);
    // Waking the thread for each file would take as long as the file.
    else if (m_slots.size() == mostAhead / 2)
        m_changed.notify_all();
    return copy;
}

void CopyAhead::drop()
{
    Lock lock(m_mutex);
    forget(lock);
}

void CopyAhead::stop()
{
    {
        const Lock lock(m_mutex);
        m_isStopping = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
    m_slots.clear();
}

} // namespace vandrel

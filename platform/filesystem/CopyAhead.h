#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/filesystem/FileCopier.h"

namespace vandrel {

/// Makes the copies of a batch a few files ahead of it, so that they have only to be placed one after the other: on a
/// thread of its own, and on the batch's whenever that would have to wait. Whatever cannot be made ahead is left to the
/// batch, and nothing that comes after it is there until the batch has done it: so a disk that becomes full fails the
/// same file as it would without this.
class CopyAhead
{
public:
    /// Makes the copy of the file with that index, or nothing. Runs on both threads; raises nothing.
    using Maker = std::function<std::unique_ptr<PreparedCopy>(int index)>;

    CopyAhead(int count, Maker make) : m_count(count), m_make(std::move(make)) { }
    ~CopyAhead() { stop(); }
    CopyAhead(const CopyAhead &) = delete;
    CopyAhead &operator=(const CopyAhead &) = delete;

    /// The copy of the file with that index, made ahead or now, or nothing where it is left to the batch. Asked for
    /// every file in order.
    std::unique_ptr<PreparedCopy> take(int index);
    /// Drops what was made ahead, since a file turned out to be another than it was; the next take() begins anew.
    void drop();
    /// Ends the thread, after the file it is at, and drops what was made ahead.
    void stop();

private:
    /// A file that is being made, or was.
    struct Slot {
        std::unique_ptr<PreparedCopy> copy;
        bool isMade = false;
    };
    using Lock = std::unique_lock<std::mutex>;

    bool start();
    void run();
    bool mayMake() const;
    void makeNext(Lock &lock);
    void forget(Lock &lock);

    const int m_count;
    const Maker m_make;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Slot> m_slots;
    int m_first = 0; ///< the file of the first slot
    int m_making = 0;
    int m_drops = 0;
    bool m_waitsForBatch = false;
    bool m_isStopping = false;
    std::thread m_thread;
};

} // namespace vandrel

#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <thread>

namespace vandrel {

/// How many pieces of work are worth doing at the same time.
inline int workersAtOnce()
{
    return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

/// Works out pieces on all processors, each with `work` on any thread, and hands them to `take` on this one, in their
/// order. No more of them are in memory than there are processors, and one. Raises what the two raise, once no piece
/// is being worked on any more.
template<typename Piece>
void inOrder(int pieces,
             const std::function<Piece(int piece)> &work,
             const std::function<void(Piece piece)> &take)
{
    if (pieces == 1) {
        take(work(0));
        return;
    }
    const auto mostAhead = static_cast<std::size_t>(workersAtOnce()) + 1;
    std::deque<std::future<Piece>> coming;
    int started = 0;
    for (int taken = 0; taken < pieces; ++taken) {
        for (; started < pieces && coming.size() < mostAhead; ++started)
            // On this thread where the system has no more threads to give.
            coming.push_back(std::async(std::launch::async | std::launch::deferred, work, started));
        Piece piece = coming.front().get();
        coming.pop_front();
        take(std::move(piece));
    }
}

} // namespace vandrel

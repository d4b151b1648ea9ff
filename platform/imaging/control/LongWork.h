#pragma once

#include <atomic>
#include <functional>

namespace vandrel {

/// How far a piece of work has come, told by its thread and read by another: 0 to 100.
using WorkProgress = std::atomic<int>;

/// Does a piece of work on a thread of its own and returns when it is done, so that whoever waits sees the windows
/// painted: once it has taken half a second, they are, a dozen times a second, and `onProgress` is called with 0 to 1
/// after each time; at the end then once more with 1. The user's input waits meanwhile, and so do the events of all
/// other controls. Raises what the work raises. User-interface thread only.
void doLongWork(const std::function<void(WorkProgress &progress)> &work,
                const std::function<void(double done)> &onProgress);

} // namespace vandrel

#pragma once

#include <chrono>

namespace vandrel {

/// What this thread has taken of a processor's time so far. On a busy machine it goes slower than the clock.
std::chrono::nanoseconds threadTime();

} // namespace vandrel

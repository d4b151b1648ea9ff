#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace vandrel {

/// What `ask` returns, called on a thread of its own; nothing when it has not returned within `patience`. A call that
/// is given up goes on by itself for as long as it takes, so that it may use nothing but what it holds.
template<typename Ask>
auto answerWithin(std::chrono::milliseconds patience, Ask ask) -> std::optional<decltype(ask())>
{
    std::promise<decltype(ask())> promise;
    auto answer = promise.get_future();
    std::thread([ask = std::move(ask), promise = std::move(promise)]() mutable {
        promise.set_value(ask());
    }).detach();
    if (answer.wait_for(patience) != std::future_status::ready)
        return std::nullopt;
    return answer.get();
}

} // namespace vandrel

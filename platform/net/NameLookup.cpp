#include "platform/net/NameLookup.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include <QCoreApplication>

namespace vandrel {

namespace {

constexpr int mostUnanswered = 16;

QString tooMany()
{
    return QCoreApplication::translate("NameLookup", "earlier questions are still unanswered");
}

} // namespace

struct NameLookup::State {
    /// How many threads wait for the resolver.
    static std::atomic<int> unanswered;

    std::mutex mutex;
    std::condition_variable answered;
    std::optional<NameAnswer> answer;
};

std::atomic<int> NameLookup::State::unanswered = 0;

NameLookup::NameLookup(const QString &name, const Resolver &resolver) : m_state(std::make_shared<State>())
{
    const auto ask = [state = m_state, name, resolver] {
        NameAnswer found = resolver(name);
        const std::scoped_lock lock(state->mutex);
        state->answer = std::move(found);
        --State::unanswered;
        state->answered.notify_all();
    };
    if (++State::unanswered <= mostUnanswered) {
        try {
            std::thread(ask).detach();
            return;
        } catch (const std::system_error &) {
            // A system that has no thread left has too many questions open as well.
        }
    }
    --State::unanswered;
    m_state->answer = NameAnswer{{}, tooMany()};
}

NameLookup::~NameLookup() = default;

bool NameLookup::wait(int milliseconds)
{
    std::unique_lock lock(m_state->mutex);
    return m_state->answered.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                      [this] { return m_state->answer.has_value(); });
}

NameAnswer NameLookup::answer() const
{
    const std::scoped_lock lock(m_state->mutex);
    return m_state->answer.value_or(NameAnswer());
}

} // namespace vandrel

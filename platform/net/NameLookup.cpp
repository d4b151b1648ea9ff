#include "platform/net/NameLookup.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include <QCoreApplication>

namespace vandrel {

namespace {

constexpr int mostUnanswered = 16;

QString tooMany()
{
    return QCoreApplication::translate("NameLookup", "earlier questions are still unanswered");
}

} // namespace

NameLookup::NameLookup(const QString &name, const Resolver &resolver)
{
    // How many threads wait for the resolver.
    static std::atomic<int> unanswered = 0;

    const auto promise = std::make_shared<std::promise<NameAnswer>>();
    m_answer = promise->get_future();
    if (++unanswered <= mostUnanswered) {
        try {
            std::thread([promise, name, resolver] {
                NameAnswer found = resolver(name);
                --unanswered;
                promise->set_value(std::move(found));
            }).detach();
            return;
        } catch (const std::system_error &) {
            // A system that has no thread left has too many questions open as well.
        }
    }
    --unanswered;
    promise->set_value({{}, tooMany()});
}

bool NameLookup::wait(int milliseconds) const
{
    return m_answer.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
}

NameAnswer NameLookup::answer() const
{
    return m_answer.get();
}

} // namespace vandrel

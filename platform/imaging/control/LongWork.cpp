#include "platform/imaging/control/LongWork.h"

#include <chrono>
#include <future>

#include <QCoreApplication>

#include "runtime/EventGate.h"

namespace vandrel {

namespace {

using namespace std::chrono_literals;

constexpr auto unnoticed = 500ms;
constexpr auto betweenPaintings = 80ms;

} // namespace

void doLongWork(const std::function<void(WorkProgress &)> &work,
                const std::function<void(double)> &onProgress)
{
    WorkProgress progress = 0;
    std::future<void> done = std::async(std::launch::async, [&work, &progress] { work(progress); });
    if (done.wait_for(unnoticed) == std::future_status::ready) {
        done.get();
        return;
    }
    {
        const EventGate::Hold hold;
        do {
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
            onProgress(progress.load() / 100.0);
        } while (done.wait_for(betweenPaintings) != std::future_status::ready);
    }
    onProgress(1);
    done.get();
}

} // namespace vandrel

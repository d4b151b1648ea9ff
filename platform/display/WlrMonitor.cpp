#include "platform/display/WlrMonitor.h"

#include "platform/display/WlrOutputs.h"

namespace vandrel {

namespace {

// How often a change is begun anew because the monitors have changed meanwhile.
constexpr int mostAttempts = 3;

QSize resolutionOf(const WlrOutputs &outputs, const QString &head)
{
    const WlrState state = outputs.state();
    const WlrHead *found = state.head(head);
    return found ? found->resolution() : QSize();
}

// The compositor is asked before anything is changed, and what it says it has done is looked at.
bool apply(WlrOutputs &outputs, const QString &head, const WlrMode &mode)
{
    WlrAnswer answer = WlrAnswer::Outdated;
    for (int attempt = 0; attempt < mostAttempts && answer == WlrAnswer::Outdated; ++attempt) {
        answer = outputs.test(head, mode);
        if (answer == WlrAnswer::Done)
            answer = outputs.apply(head, mode);
    }
    return answer == WlrAnswer::Done && outputs.await([&] {
        const WlrState state = outputs.state();
        const WlrHead *found = state.head(head);
        return found && found->isOn && found->current.size == mode.size;
    });
}

} // namespace

bool WlrMonitor::isOffered()
{
    return WlrOutputs().isThere();
}

QSize WlrMonitor::resolution()
{
    const WlrState state = WlrOutputs().state();
    const WlrHead *primary = state.primary();
    return primary ? primary->resolution() : QSize();
}

bool WlrMonitor::change(const QSize &wanted)
{
    WlrOutputs outputs;
    const WlrState before = outputs.state();
    const WlrHead *primary = before.primary();
    if (!primary)
        return false;
    if (primary->resolution() == wanted)
        return true;
    const std::optional<WlrMode> mode = primary->best(wanted);
    if (!mode)
        return false;
    if (apply(outputs, primary->name, *mode))
        return true;
    if (resolutionOf(outputs, primary->name) != primary->resolution())
        outputs.apply(primary->name, primary->current);
    return false;
}

} // namespace vandrel

#include "platform/display/WlrState.h"

#include <algorithm>
#include <tuple>

namespace vandrel {

QSize WlrHead::resolution() const
{
    if (!isOn)
        return {};
    return isUpright ? current.size.transposed() : current.size;
}

// A virtual monitor tells of its present size alone, if of any.
std::optional<WlrMode> WlrHead::best(const QSize &resolution) const
{
    const QSize size = isUpright ? resolution.transposed() : resolution;
    if (size.isEmpty())
        return {};
    std::optional<WlrMode> found;
    for (const WlrMode &mode : modes) {
        if (mode.size == size && (!found || mode.frequency > found->frequency))
            found = mode;
    }
    if (!found && isVirtual && modes.size() <= 1)
        found = WlrMode{size, 0};
    return found;
}

const WlrHead *WlrState::head(const QString &name) const
{
    const auto found = std::find_if(heads.begin(), heads.end(),
                                    [&name](const WlrHead &head) { return head.name == name; });
    return found == heads.end() ? nullptr : &*found;
}

const WlrHead *WlrState::primary() const
{
    const WlrHead *first = nullptr;
    for (const WlrHead &head : heads) {
        if (head.isOn
            && (!first
                || std::tuple(head.place.y(), head.place.x())
                    < std::tuple(first->place.y(), first->place.x())))
            first = &head;
    }
    return first;
}

} // namespace vandrel

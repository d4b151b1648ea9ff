#include "platform/display/RandrMonitor.h"

#include "platform/display/XcbRandrScreen.h"

namespace vandrel {

QSize RandrMonitor::resolution()
{
    const std::optional<RandrState> state = XcbRandrScreen().state();
    if (!state || state->primary < 0)
        return {};
    const RandrPicture &picture = state->pictures[state->primary];
    return picture.isUpright ? picture.modeSize.transposed() : picture.modeSize;
}

bool RandrMonitor::change(const QSize &wanted)
{
    XcbRandrScreen screen;
    return changeMode(screen, wanted);
}

} // namespace vandrel

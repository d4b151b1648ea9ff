#include "platform/display/PrimaryMonitor.h"

#include <QtGlobal>

#include "platform/display/MutterMonitor.h"
#include "platform/display/RandrMonitor.h"

namespace vandrel {

// Where a Wayland desktop runs, its X server has modes as well, but they are not the monitor's. A desktop without an
// interface that is known here refuses what is asked of it.
std::unique_ptr<PrimaryMonitor> PrimaryMonitor::ofDesktop()
{
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return std::make_unique<MutterMonitor>();
    return std::make_unique<RandrMonitor>();
}

} // namespace vandrel

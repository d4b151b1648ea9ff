#include "platform/capture/ScreenSource.h"

#include "platform/capture/PortalScreenSource.h"
#include "platform/capture/XcbScreenSource.h"

namespace vandrel {

// Where a Wayland desktop runs, its X server shows the windows of old programs and nothing else, so that only the
// portal sees the whole screen, whichever of the two this program's own windows are on.
std::unique_ptr<ScreenSource> ScreenSource::ofDesktop()
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return std::make_unique<PortalScreenSource>();
    return std::make_unique<XcbScreenSource>();
}

} // namespace vandrel

#include "platform/display/PrimaryMonitor.h"

#include <QString>
#include <QStringList>

#include "platform/display/KScreenMonitor.h"
#include "platform/display/MutterMonitor.h"
#include "platform/display/RandrMonitor.h"
#include "platform/display/WlrMonitor.h"

namespace vandrel {

// Where a Wayland desktop runs, its X server has modes as well, but they are not the monitor's. A desktop without an
// interface that is known here refuses what is asked of it.
std::unique_ptr<PrimaryMonitor> PrimaryMonitor::ofDesktop()
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return std::make_unique<RandrMonitor>();
    if (qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(u"KDE", Qt::CaseInsensitive))
        return std::make_unique<KScreenMonitor>();
    if (WlrMonitor::isOffered())
        return std::make_unique<WlrMonitor>();
    return std::make_unique<MutterMonitor>();
}

} // namespace vandrel

#include <QObject>

#include "app/TableModule.h"
#include "platform/capture/DesktopScreenCapture.h"
#include "platform/display/SystemDisplay.h"
#include "platform/sysinfo/LinuxSystemInfo.h"
#include "system/frmCapture.h"
#include "system/frmInfo.h"
#include "system/frmRes.h"

using namespace vandrel;

namespace {

QWidget *makeScreenCapture(const ToolServices &services)
{
    return new frmCapture(std::make_unique<DesktopScreenCapture>(services.drives), services.commonDialog());
}

QWidget *makeScreenResolution(const ToolServices &)
{
    return new frmRes(std::make_unique<SystemDisplay>());
}

QWidget *makeSystemInfo(const ToolServices &)
{
    return new frmInfo(std::make_unique<LinuxSystemInfo>());
}

/// The tools about the computer itself, with the connections to its screen behind them.
class SystemModule : public QObject, public TableModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "io.github.vandrel.ToolModule")
    Q_INTERFACES(vandrel::ToolModule)

public:
    SystemModule()
        : TableModule({
            {QStringLiteral("frmCapture"), makeScreenCapture},
            {QStringLiteral("frmInfo"), makeSystemInfo},
            {QStringLiteral("frmRes"), makeScreenResolution},
        })
    { }
};

} // namespace

#include "SystemModule.moc"

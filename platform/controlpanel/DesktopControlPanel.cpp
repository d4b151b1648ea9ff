#include "platform/controlpanel/DesktopControlPanel.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include "platform/controlpanel/SettingsPrograms.h"
#include "runtime/EventGate.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

QList<Desktop> desktopsToTry()
{
    if (const auto desktop = desktopFromEnvironment(qEnvironmentVariable("XDG_CURRENT_DESKTOP")))
        return {*desktop};
    return {Desktop::Gnome, Desktop::Plasma, Desktop::Xfce, Desktop::Lxqt, Desktop::Mate, Desktop::Cinnamon};
}

bool panelExists(const QString &panelFile)
{
    if (panelFile.isEmpty())
        return true;
    // Panels are installed beside the applications; those of older Plasma releases among its services.
    return !QStandardPaths::locate(QStandardPaths::ApplicationsLocation, panelFile).isEmpty()
        || !QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                   QStringLiteral("kservices5/") + panelFile)
                .isEmpty();
}

bool start(const SettingsCommand &command)
{
    const QString program = QStandardPaths::findExecutable(command.program);
    return !program.isEmpty() && panelExists(command.panelFile)
        && QProcess::startDetached(program, command.arguments);
}

bool openNearest(ControlPanel::Member member, std::int32_t tab)
{
    for (const Desktop desktop : desktopsToTry()) {
        for (const SettingsCommand &command : settingsCommands(desktop, member, tab)) {
            if (start(command))
                return true;
        }
    }
    return false;
}

} // namespace

void DesktopControlPanel::open(Member member, std::optional<std::int32_t> argument, const QString &caption)
{
    if (openNearest(member, argument.value_or(-1)))
        return;
    EventGate::raise(this, [caption] { MsgBox(tr("%1: none exists on this system.").arg(caption)); });
}

} // namespace vandrel

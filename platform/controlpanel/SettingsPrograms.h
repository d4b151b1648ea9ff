#pragma once

#include <cstdint>
#include <optional>

#include <QList>
#include <QString>
#include <QStringList>

#include "controls/ControlPanel.h"

namespace vandrel {

/// One way to open a settings item.
struct SettingsCommand {
    QString program;
    QStringList arguments;
    /// The desktop file that a settings centre installs with the panel; the command is of use only where this
    /// file exists. Empty where the program is the item itself.
    QString panelFile;

    bool operator==(const SettingsCommand &) const = default;
};

/// The desktops whose settings programs are known, in the order they are tried on an unknown one.
enum class Desktop { Gnome, Plasma, Xfce, Lxqt, Mate, Cinnamon };

/// The desktop of an XDG_CURRENT_DESKTOP value: a colon-separated list, read without regard to case, of which
/// the first known name counts. Empty when there is none.
std::optional<Desktop> desktopFromEnvironment(const QString &currentDesktop);

/// The commands that open an item on a desktop, the best first; empty when the desktop has no such item. `tab`
/// is the zero-based tab that the caller asked for, -1 for none.
QList<SettingsCommand> settingsCommands(Desktop desktop, ControlPanel::Member member, std::int32_t tab);

} // namespace vandrel

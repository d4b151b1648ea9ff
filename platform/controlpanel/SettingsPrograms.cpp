#include "platform/controlpanel/SettingsPrograms.h"

#include <algorithm>
#include <array>

namespace vandrel {

namespace {

using Member = ControlPanel::Member;

// One row an item, one column a desktop. A cell lists commands separated by "|"; a word that begins with "@"
// names the panel's desktop file. "panel:x" is a panel of the GNOME settings, "kcm:x" a module of the Plasma
// settings with each program that can show it. An empty cell: the desktop has no such item.
struct ItemPrograms {
    Member member;
    std::array<const char *, 6> commands;
};

constexpr const char *xfceSettings = "xfce4-settings-manager";
constexpr const char *lxqtSettings = "lxqt-config";
constexpr const char *mateSettings = "mate-control-center";
constexpr const char *printerSettings = "system-config-printer";
constexpr const char *connectionEditor = "nm-connection-editor";
constexpr const char *packageManagers = "synaptic-pkexec|synaptic";

constexpr std::array itemPrograms{
    ItemPrograms{Member::System,
                 {"panel:info-overview|gnome-control-center system about @gnome-system-panel.desktop",
                  "kcm:kcm_about-distro|kinfocenter", xfceSettings, lxqtSettings, mateSettings,
                  "cinnamon-settings info"}},
    ItemPrograms{
        Member::AddNewHardware,
        {"panel:bluetooth", "kinfocenter", xfceSettings, lxqtSettings, mateSettings, "cinnamon-settings"}},
    ItemPrograms{Member::AddRemovePrograms,
                 {"gnome-software", "plasma-discover", packageManagers, packageManagers, packageManagers,
                  "mintinstall|gnome-software|synaptic-pkexec"}},
    ItemPrograms{Member::RegionalSettings,
                 {"panel:region|gnome-control-center system region @gnome-system-panel.desktop",
                  "kcm:kcm_regionandlang", "", "lxqt-config-locale", "", "mintlocale"}},
    ItemPrograms{Member::Display,
                 {"panel:display", "kcm:kcm_kscreen", "xfce4-display-settings", "lxqt-config-monitor",
                  "mate-display-properties", "cinnamon-settings display"}},
    ItemPrograms{Member::Mouse,
                 {"panel:mouse", "kcm:kcm_mouse", "xfce4-mouse-settings", "lxqt-config-input",
                  "mate-mouse-properties", "cinnamon-settings mouse"}},
    ItemPrograms{Member::Printers,
                 {"panel:printers", "kcm:kcm_printer_manager", printerSettings, printerSettings,
                  printerSettings, printerSettings}},
    ItemPrograms{Member::AddPrinterWizard,
                 {"panel:printers", "kde-add-printer --add-printer", printerSettings, printerSettings,
                  printerSettings, printerSettings}},
    ItemPrograms{Member::Fonts,
                 {"font-manager", "kcm:kcm_fontinst", "xfce4-appearance-settings", "lxqt-config-appearance",
                  "mate-appearance-properties", "cinnamon-settings fonts"}},
    ItemPrograms{Member::Multimedia,
                 {"panel:sound", "kcm:kcm_pulseaudio", "pavucontrol", "pavucontrol-qt|pavucontrol",
                  "mate-volume-control", "cinnamon-settings sound"}},
    ItemPrograms{Member::TimeDate,
                 {"panel:datetime|gnome-control-center system datetime @gnome-system-panel.desktop",
                  "kcm:kcm_clock", "", "lxqt-admin-time", "mate-time-admin", "cinnamon-settings calendar"}},
    ItemPrograms{Member::Modem,
                 {"panel:wwan|panel:network", "kcm:kcm_networkmanagement", connectionEditor, connectionEditor,
                  connectionEditor, "cinnamon-settings network"}},
    ItemPrograms{Member::Passwords,
                 {"panel:user-accounts|gnome-control-center system users @gnome-system-panel.desktop",
                  "kcm:kcm_users", "", "lxqt-admin-user", "mate-about-me", "cinnamon-settings user"}},
    ItemPrograms{Member::Internet,
                 {"panel:network", "kcm:kcm_networkmanagement", connectionEditor, connectionEditor,
                  "mate-network-properties|nm-connection-editor", "cinnamon-settings network"}},
};

// Items that the desktops of today do not tell apart.
Member tableRow(Member member)
{
    switch (member) {
    case Member::Sounds:
        return Member::Multimedia;
    case Member::DialUpWizard:
        return Member::Modem;
    default:
        return member;
    }
}

SettingsCommand writtenOut(const QString &text)
{
    SettingsCommand command;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts)) {
        if (command.program.isEmpty())
            command.program = word;
        else if (word.startsWith(u'@'))
            command.panelFile = word.mid(1);
        else
            command.arguments += word;
    }
    return command;
}

QList<SettingsCommand> parsedCommands(const QString &text)
{
    const QString name = text.section(u':', 1);
    if (text.startsWith(QLatin1String("panel:")))
        return {{QStringLiteral("gnome-control-center"),
                 {name},
                 QStringLiteral("gnome-%1-panel.desktop").arg(name)}};
    if (!text.startsWith(QLatin1String("kcm:")))
        return {writtenOut(text)};
    QList<SettingsCommand> commands;
    for (const char *program : {"systemsettings", "kcmshell5", "kcmshell6"})
        commands.append({QString::fromLatin1(program), {name}, name + QStringLiteral(".desktop")});
    return commands;
}

// The package manager's pages stand in for the tabs: the installed programs for the first, the catalogue else.
void selectTab(SettingsCommand &command, std::int32_t tab)
{
    if (command.program == u"gnome-software")
        command.arguments
            += tab == 0 ? QStringLiteral("--mode=installed") : QStringLiteral("--mode=overview");
}

} // namespace

std::optional<Desktop> desktopFromEnvironment(const QString &currentDesktop)
{
    struct Name {
        const char *text;
        Desktop desktop;
    };
    static constexpr std::array names{
        Name{"gnome", Desktop::Gnome},       Name{"unity", Desktop::Gnome},
        Name{"budgie", Desktop::Gnome},      Name{"pop", Desktop::Gnome},
        Name{"kde", Desktop::Plasma},        Name{"xfce", Desktop::Xfce},
        Name{"lxqt", Desktop::Lxqt},         Name{"mate", Desktop::Mate},
        Name{"cinnamon", Desktop::Cinnamon}, Name{"x-cinnamon", Desktop::Cinnamon},
    };
    for (const QString &token : currentDesktop.toLower().split(u':', Qt::SkipEmptyParts)) {
        const auto found = std::find_if(names.begin(), names.end(), [&token](const Name &name) {
            return token == QLatin1String(name.text);
        });
        if (found != names.end())
            return found->desktop;
    }
    return {};
}

QList<SettingsCommand> settingsCommands(Desktop desktop, ControlPanel::Member member, std::int32_t tab)
{
    const Member row = tableRow(member);
    const auto found = std::find_if(itemPrograms.begin(), itemPrograms.end(),
                                    [row](const ItemPrograms &item) { return item.member == row; });
    QList<SettingsCommand> commands;
    if (found == itemPrograms.end())
        return commands;
    const QString cell = QString::fromLatin1(found->commands.at(static_cast<std::size_t>(desktop)));
    for (const QString &text : cell.split(u'|', Qt::SkipEmptyParts))
        commands += parsedCommands(text);
    for (SettingsCommand &command : commands)
        selectTab(command, tab);
    return commands;
}

} // namespace vandrel

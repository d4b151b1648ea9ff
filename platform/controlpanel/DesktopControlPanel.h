#pragma once

#include <QObject>

#include "controls/ControlPanel.h"

namespace vandrel {

/// Opens the settings item of the running desktop that comes nearest to the one asked for. The desktop is the
/// one that XDG_CURRENT_DESKTOP names; where it names none that is known, the first program found on the
/// PATH among those of all known desktops is taken. Where there is none, a message box names the item.
class DesktopControlPanel : public QObject, public ControlPanel
{
    Q_OBJECT

public:
    void open(Member member, std::optional<std::int32_t> argument, const QString &caption) override;
};

} // namespace vandrel

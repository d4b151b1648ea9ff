#pragma once

#include <QDBusConnection>

#include "platform/display/PrimaryMonitor.h"

namespace vandrel {

/// The primary monitor of a Wayland desktop whose compositor offers org.gnome.Mutter.DisplayConfig. Changes are
/// temporary ones in that interface's words. Of several monitors those to the right and below move along, since the
/// compositor allows neither gaps nor overlaps.
class MutterMonitor final : public PrimaryMonitor
{
public:
    /// Asks on that bus; the user's own unless a test says otherwise.
    explicit MutterMonitor(QDBusConnection bus = QDBusConnection::sessionBus());

    QSize resolution() override;
    bool change(const QSize &wanted) override;

private:
    QDBusConnection m_bus;
};

} // namespace vandrel

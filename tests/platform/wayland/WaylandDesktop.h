#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include "tests/platform/command/EnvironmentVariable.h"

namespace vandrel::test {

/// A Wayland desktop in memory, which WAYLAND_DISPLAY and XDG_RUNTIME_DIR name as long as the object is there. Nobody
/// sees its monitors, and it has no keyboard.
class WaylandDesktop
{
public:
    /// Sway, which is on wlroots, with that many monitors of 1280 x 720 in a row, and further lines of its configuration.
    static QString sway() { return QStringLiteral("sway"); }
    /// Weston, which offers no interface for its monitors.
    static QString weston() { return QStringLiteral("weston"); }

    explicit WaylandDesktop(const QString &compositor,
                            int monitors = 1,
                            const QByteArray &configuration = {});
    ~WaylandDesktop();
    WaylandDesktop(const WaylandDesktop &) = delete;
    WaylandDesktop &operator=(const WaylandDesktop &) = delete;

    /// Whether a program is installed.
    static bool has(const QString &program);

    /// False where the desktop could not be started.
    bool isThere() const { return m_isThere; }
    /// The folder of its sockets, which its programs may write to.
    QString folder() const { return m_folder.path(); }
    /// Runs a program on the desktop to its end; what it wrote to its standard output, or null when it failed.
    QByteArray output(const QStringList &command) const;

    /// "name place size" of Sway's monitors that are on, as `swaymsg` tells them.
    QStringList monitors() const;

private:
    bool startSway(int monitors, const QByteArray &configuration);
    bool startWeston();
    void start(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment);
    bool awaitFile(const QString &name);
    QStringList asOrdinaryUser(const QStringList &command) const;

    QTemporaryDir m_folder;
    QProcess m_compositor;
    QByteArray m_swaySocket;
    const EnvironmentVariable m_display{"WAYLAND_DISPLAY"};
    const EnvironmentVariable m_runtimeFolder{"XDG_RUNTIME_DIR"};
    bool m_isThere = false;
};

} // namespace vandrel::test

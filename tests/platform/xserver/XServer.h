#pragma once

#include <QProcess>
#include <QStringList>

#include "tests/platform/command/EnvironmentVariable.h"

namespace vandrel::test {

/// An X server in memory, which DISPLAY names as long as the object is there. The servers that tests know: "Xvfb", whose
/// screen is as it was started, and "Xvnc", whose screen has modes to choose from.
class XServer
{
public:
    /// Starts `program` with `arguments` on a free display.
    explicit XServer(const QString &program, const QStringList &arguments = {});
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    /// False where the server could not be started.
    bool isThere() const { return m_isThere; }

    /// Whether a program is installed.
    static bool has(const QString &program);
    /// Runs a program on the display to its end; what it wrote to its standard output, or null when it failed.
    static QByteArray output(const QStringList &command);

private:
    QProcess m_server;
    const EnvironmentVariable m_display{"DISPLAY"};
    bool m_isThere = false;
};

} // namespace vandrel::test

#include "tests/platform/xserver/XServer.h"

#include <QStandardPaths>

#include "tests/platform/command/CommandOutput.h"

namespace vandrel::test {

namespace {

// Bounds a wait, in milliseconds.
constexpr int patience = 60'000;

} // namespace

XServer::XServer(const QString &program, const QStringList &arguments)
{
    m_server.setStandardErrorFile(QProcess::nullDevice());
    // The server writes the number it has found to the descriptor named here once it takes connections.
    m_server.start(program,
                   arguments
                       + QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"),
                                     QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                                     QStringLiteral("-noreset")});
    while (!m_server.canReadLine()) {
        if (!m_server.waitForReadyRead(patience))
            return;
    }
    const QByteArray number = m_server.readLine().trimmed();
    m_display.set(':' + number);
    m_isThere = !number.isEmpty();
}

XServer::~XServer()
{
    m_server.terminate();
    if (!m_server.waitForFinished(patience))
        m_server.kill();
}

bool XServer::has(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

QByteArray XServer::output(const QStringList &command)
{
    return commandOutput(command);
}

} // namespace vandrel::test

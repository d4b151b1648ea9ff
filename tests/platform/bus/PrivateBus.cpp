#include "tests/platform/bus/PrivateBus.h"

namespace vandrel::test {

namespace {

// Bounds a wait, in milliseconds.
constexpr int patience = 60'000;

} // namespace

PrivateBus::PrivateBus()
{
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--print-address=1")});
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(patience))
            return;
    }
    m_address = QString::fromLocal8Bit(m_daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus()
{
    for (const QString &name : std::as_const(m_connections))
        QDBusConnection::disconnectFromBus(name);
    m_daemon.terminate();
    if (!m_daemon.waitForFinished(patience))
        m_daemon.kill();
}

QDBusConnection PrivateBus::connection(const QString &name)
{
    if (m_connections.contains(name))
        return QDBusConnection(name);
    m_connections.append(name);
    return QDBusConnection::connectToBus(m_address, name);
}

void PrivateBus::disconnect(const QString &name)
{
    m_connections.removeAll(name);
    QDBusConnection::disconnectFromBus(name);
}

} // namespace vandrel::test

#pragma once

#include <QDBusConnection>
#include <QProcess>

namespace vandrel::test {

/// A message bus without anybody on it. Services and those who ask them each get a connection of their own.
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// Empty where no bus could be started.
    QString address() const { return m_address; }
    /// A connection of that name; the same one whenever it is asked for again.
    QDBusConnection connection(const QString &name);
    /// Ends a connection, and with it what was registered on it.
    void disconnect(const QString &name);

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};

} // namespace vandrel::test

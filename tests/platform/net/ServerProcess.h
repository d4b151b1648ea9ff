#pragma once

#include <QHostAddress>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace vandrel {

/// A test's server that is a program of its own. It ends with this object.
class ServerProcess
{
public:
    ServerProcess();
    /// Closes its input, and ends it where it does not end by that.
    ~ServerProcess();
    ServerProcess(const ServerProcess &) = delete;
    ServerProcess &operator=(const ServerProcess &) = delete;

    /// What the server's environment has beside this program's. Before it is started.
    void setVariable(const QString &name, const QString &value);

    /// Starts a server that says when it listens: the words of its first line. Empty when it says nothing in time.
    QStringList startAndHear(const QString &program, const QStringList &arguments);
    /// Starts a server and waits until it accepts connections; false when it does not in time.
    bool startAndKnock(const QString &program,
                       const QStringList &arguments,
                       const QHostAddress &address,
                       quint16 port);
    /// Closes its input; false when it does not end by that.
    bool end();
    /// What it has written since the last call.
    QByteArray said();

    /// A port on which nobody listens; 0 when this machine has no such address.
    static quint16 freePort(const QHostAddress &address = QHostAddress::LocalHost);
    /// The path of a server; empty when it is not installed. Those for root are found, too.
    static QString installed(const QString &program);

private:
    bool endWithin(int milliseconds);

    QProcess m_process;
};

} // namespace vandrel

#pragma once

#include <memory>

#include <QProcess>
#include <QStringList>

namespace vandrel::test {

/// Gives the program a network of its own, with nothing in it but the loopback, before any thread is made. False where
/// the system does not allow it, and the program stays in the network it was started in.
bool enterOwnNetwork();

/// Gives the program leave to send echo requests through datagram sockets, in the network it has entered; it begins
/// without.
bool permitDatagrams();

/// Runs a program to its end; true when it succeeds.
bool run(const QStringList &command);

/// Another computer at the end of a link: this one is 10.77.0.1 and fd77::1 on it, that one 10.77.0.2 and fd77::2. Of
/// the networks behind it that computer calls 10.78.1.0/24 and fd78:1::/64 unreachable, 10.78.2.0/24 forbidden, and
/// sends 10.78.4.0/24 on; in 10.78.3.0/24 are the hosts of tests/servers/echo_host.py.
class Neighbour
{
public:
    Neighbour();
    ~Neighbour();
    Neighbour(const Neighbour &) = delete;
    Neighbour &operator=(const Neighbour &) = delete;

    /// False where it could not be set up.
    bool isThere() const { return m_isThere; }

private:
    bool start();
    bool within(const QString &script) const;

    QProcess m_computer;
    QProcess m_hosts;
    bool m_isThere = false;
};

} // namespace vandrel::test

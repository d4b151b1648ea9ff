#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QString>

namespace vandrel {

/// A network interface that runs, the computer's own loopback left out.
struct LocalInterface {
    /// As the system calls it ("eth0").
    QString name;
    QList<QHostAddress> addresses;
};

/// What this computer knows of its own place in the network. Collecting it asks nobody else and takes no time.
struct LocalFacts {
    /// The addresses that packets to the world would carry as their sender, IPv4 before IPv6; empty without a route.
    QList<QHostAddress> routed;
    QList<LocalInterface> interfaces;
    /// The host's own name, with or without its domain.
    QString hostName;
    /// The domain that the resolver looks names up in first; empty when it has none.
    QString resolverDomain;
    /// The system's table of hosts (hosts(5)); empty where there is none.
    QByteArray hostsFile;

    static LocalFacts ofThisComputer();
};

/// The address of the interface with the default route; else one of another interface that reaches a real network,
/// IPv4 before IPv6 and made by a router or a person before made up by the computer. Null when there is none.
QHostAddress localAddress(const LocalFacts &facts);

/// The domain of the resolver; else that of the host's full name, its own or the one the table of hosts has for it.
/// Empty when there is none.
QString localDomain(const LocalFacts &facts);

} // namespace vandrel

#include "platform/localip/LocalFacts.h"

#include <algorithm>

#include <QHostInfo>
#include <QNetworkInterface>
#include <QNetworkProxy>
#include <QUdpSocket>

#include "platform/localip/HostsFile.h"
#include "platform/net/ServerAddress.h"

namespace vandrel {

namespace {

// Of networks set aside for documents (RFC 5737, RFC 3849): every default route leads there, and nobody is there.
constexpr const char *worldAddresses[] = {"192.0.2.1", "2001:db8::1"};
constexpr quint16 anyPort = 9;

// Bridges and links to guests on this computer; they have addresses, and reach no network beside their own.
constexpr const char *guestInterfaces[]
    = {"docker", "virbr", "veth", "br-", "vnet", "lxc", "lxd", "podman", "cni"};

// Joining a datagram socket to an address sends nothing; it has the system choose the route and the sender.
QHostAddress senderTowards(const QString &address)
{
    QUdpSocket socket;
    socket.setProxy(QNetworkProxy::NoProxy);
    socket.connectToHost(QHostAddress(address), anyPort);
    return socket.state() == QAbstractSocket::ConnectedState ? socket.localAddress() : QHostAddress();
}

bool runs(const QNetworkInterface &interface)
{
    const auto flags = interface.flags();
    return flags.testFlag(QNetworkInterface::IsUp) && flags.testFlag(QNetworkInterface::IsRunning)
        && !flags.testFlag(QNetworkInterface::IsLoopBack);
}

bool leadsToGuests(const LocalInterface &interface)
{
    return std::any_of(std::begin(guestInterfaces), std::end(guestInterfaces),
                       [&](const char *prefix) { return interface.name.startsWith(QLatin1String(prefix)); });
}

// The lower, the better; none for an address that no other computer can answer to.
enum class Rank { Stated4, Stated6, MadeUp4, None };

Rank rankOf(const QHostAddress &address)
{
    if (address.isNull() || address.isLoopback() || address.isMulticast())
        return Rank::None;
    if (address.protocol() == QAbstractSocket::IPv4Protocol)
        return address.isLinkLocal() ? Rank::MadeUp4 : Rank::Stated4;
    return address.isLinkLocal() ? Rank::None : Rank::Stated6;
}

// The part behind the first point, when what is left can be a domain.
QString domainOf(const QString &fullName)
{
    const QString name = hostNameInAscii(fullName);
    const qsizetype point = name.indexOf(u'.');
    return point < 0 || name.startsWith(QStringLiteral("localhost.")) ? QString() : name.mid(point + 1);
}

// The official name of the host: the first of a line that has the host's name among its names.
QString officialName(const QByteArray &hostsFile, const QString &hostName)
{
    const QByteArray own = hostName.toUtf8().toLower();
    for (const QByteArray &line : hostsFile.split('\n')) {
        const QByteArrayList words = line.split('#').constFirst().simplified().toLower().split(' ');
        if (words.size() < 2 || own.isEmpty() || words.indexOf(own, 1) < 0)
            continue;
        const QString name = QString::fromUtf8(words.at(1));
        if (!domainOf(name).isEmpty())
            return name;
    }
    return {};
}

} // namespace

LocalFacts LocalFacts::ofThisComputer()
{
    LocalFacts facts;
    for (const char *world : worldAddresses) {
        const QHostAddress sender = senderTowards(QString::fromLatin1(world));
        if (!sender.isNull())
            facts.routed.append(sender);
    }
    for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
        if (!runs(interface))
            continue;
        QList<QHostAddress> addresses;
        for (const QNetworkAddressEntry &entry : interface.addressEntries())
            addresses.append(entry.ip());
        facts.interfaces.append({interface.name(), addresses});
    }
    facts.hostName = QHostInfo::localHostName();
    facts.resolverDomain = QHostInfo::localDomainName();
    facts.hostsFile = systemHostsFile();
    return facts;
}

QHostAddress localAddress(const LocalFacts &facts)
{
    for (const QHostAddress &address : facts.routed) {
        if (rankOf(address) != Rank::None)
            return address;
    }
    QHostAddress best;
    for (const LocalInterface &interface : facts.interfaces) {
        if (leadsToGuests(interface))
            continue;
        for (const QHostAddress &address : interface.addresses) {
            if (rankOf(address) < rankOf(best))
                best = address;
        }
    }
    return best;
}

QString localDomain(const LocalFacts &facts)
{
    const QString resolver = hostNameInAscii(facts.resolverDomain);
    if (!resolver.isEmpty())
        return resolver;
    const QString own = domainOf(facts.hostName);
    return own.isEmpty() ? domainOf(officialName(facts.hostsFile, facts.hostName)) : own;
}

} // namespace vandrel

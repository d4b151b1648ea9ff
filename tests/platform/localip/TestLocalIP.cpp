#include <memory>

#include <QNetworkInterface>
#include <QSignalSpy>
#include <QTest>

#include "platform/localip/LocalIP.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// The computer's own address and domain: from facts made up, and from this computer's.
class TestLocalIP : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theAddress_data();
    void theAddress();
    void theDomain_data();
    void theDomain();
    void everythingIsThere();
    void theNoticesInOrder_data();
    void theNoticesInOrder();
    void falseAsksNothing();
    void eachQueryAsksAnew();
    void destroyedByTheFirstNotice();
    void thisComputer();
};

namespace {

using Addresses = QList<QHostAddress>;

Addresses addresses(const QString &texts)
{
    Addresses result;
    for (const QString &text : texts.split(u' ', Qt::SkipEmptyParts))
        result.append(QHostAddress(text));
    return result;
}

// "eth0 192.0.2.1 2001:db8::1, wlan0 192.0.2.2"
QList<LocalInterface> interfaces(const QString &texts)
{
    QList<LocalInterface> result;
    for (const QString &text : texts.split(u", "_s, Qt::SkipEmptyParts))
        result.append({text.section(u' ', 0, 0), addresses(text.section(u' ', 1))});
    return result;
}

LocalFacts complete()
{
    LocalFacts facts;
    facts.routed = addresses(u"192.0.2.7"_s);
    facts.interfaces = interfaces(u"eth0 192.0.2.7"_s);
    facts.resolverDomain = u"example.org"_s;
    return facts;
}

// The notices of a query, in order.
QStringList noticesOf(LocalIP &control)
{
    QStringList notices;
    QObject::connect(&control, &MyIP::SocketError, &control, [&](bool failed) {
        notices.append(failed ? u"SocketError(True)"_s : u"SocketError(False)"_s);
    });
    QObject::connect(&control, &MyIP::NoDomainName, &control, [&] { notices.append(u"NoDomainName"_s); });
    QObject::connect(&control, &MyIP::NoIPAddress, &control, [&] { notices.append(u"NoIPAddress"_s); });
    control.setQuery(true);
    return notices;
}

} // namespace

void TestLocalIP::theAddress_data()
{
    QTest::addColumn<QString>("routed");
    QTest::addColumn<QString>("others");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the default route's")
        << u"192.0.2.7"_s << u"eth0 198.51.100.1, wlan0 192.0.2.7"_s << u"192.0.2.7"_s;
    QTest::newRow("IPv4's route before IPv6's") << u"192.0.2.7 2001:db8::7"_s << u""_s << u"192.0.2.7"_s;
    QTest::newRow("IPv6's route alone")
        << u"2001:db8::7"_s << u"eth0 198.51.100.1 2001:db8::7"_s << u"2001:db8::7"_s;
    QTest::newRow("no route") << u""_s << u"eth0 198.51.100.1"_s << u"198.51.100.1"_s;
    QTest::newRow("the first of equals")
        << u""_s << u"eth0 198.51.100.1, eth1 198.51.100.2"_s << u"198.51.100.1"_s;
    QTest::newRow("IPv4 before IPv6")
        << u""_s << u"eth0 2001:db8::1, eth1 198.51.100.2"_s << u"198.51.100.2"_s;
    QTest::newRow("a global IPv6 address") << u""_s << u"eth0 fe80::1 2001:db8::1"_s << u"2001:db8::1"_s;
    QTest::newRow("IPv6 before a made-up one")
        << u""_s << u"eth0 169.254.3.4 2001:db8::1"_s << u"2001:db8::1"_s;
    QTest::newRow("a made-up one at last") << u""_s << u"eth0 169.254.3.4 fe80::1"_s << u"169.254.3.4"_s;
    QTest::newRow("no other computer reaches these") << u""_s << u"eth0 fe80::1"_s << u""_s;
    QTest::newRow("a bridge to guests")
        << u""_s << u"docker0 172.17.0.1, virbr0 192.168.122.1, eth0 198.51.100.1"_s << u"198.51.100.1"_s;
    QTest::newRow("bridges to guests alone") << u""_s << u"docker0 172.17.0.1, veth12 10.0.0.1"_s << u""_s;
    QTest::newRow("a route through the loopback")
        << u"127.0.0.1"_s << u"eth0 198.51.100.1"_s << u"198.51.100.1"_s;
    QTest::newRow("nothing") << u""_s << u""_s << u""_s;
}

void TestLocalIP::theAddress()
{
    QFETCH(QString, routed);
    QFETCH(QString, others);
    QFETCH(QString, expected);
    LocalFacts facts;
    facts.routed = addresses(routed);
    facts.interfaces = interfaces(others);
    QCOMPARE(localAddress(facts).toString(), expected);
}

void TestLocalIP::theDomain_data()
{
    QTest::addColumn<QString>("resolver");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QByteArray>("hosts");
    QTest::addColumn<QString>("expected");
    const QByteArray none;
    QTest::newRow("the resolver's") << u"Example.ORG."_s << u"desk.other.org"_s << none << u"example.org"_s;
    QTest::newRow("the host's full name")
        << u""_s << u"desk.office.example.org"_s << none << u"office.example.org"_s;
    QTest::newRow("the table of hosts")
        << u""_s << u"desk"_s << QByteArray("127.0.0.1 localhost\n127.0.1.1\tDesk.Example.org desk # here\n")
        << u"example.org"_s;
    QTest::newRow("in a comment") << u""_s << u"desk"_s << QByteArray("# 127.0.1.1 desk.example.org desk")
                                  << u""_s;
    QTest::newRow("of another host") << u""_s << u"desk"_s << QByteArray("192.0.2.1 mail.example.org mail")
                                     << u""_s;
    QTest::newRow("the second line has it")
        << u""_s << u"desk"_s << QByteArray("::1 desk\n192.0.2.1 desk.example.org desk") << u"example.org"_s;
    QTest::newRow("the loopback's is none") << u""_s << u"localhost.localdomain"_s << none << u""_s;
    QTest::newRow("a bare name") << u""_s << u"desk"_s << none << u""_s;
    QTest::newRow("no name") << u""_s << u""_s << QByteArray("127.0.0.1 \n\n") << u""_s;
    QTest::newRow("the resolver has the root") << u"."_s << u"desk"_s << none << u""_s;
    QTest::newRow("no name at all") << u"bad name"_s << u"-- . --"_s << QByteArray("\xff\xfe \0 x", 6)
                                    << u""_s;
}

void TestLocalIP::theDomain()
{
    QFETCH(QString, resolver);
    QFETCH(QString, host);
    QFETCH(QByteArray, hosts);
    QFETCH(QString, expected);
    LocalFacts facts;
    facts.resolverDomain = resolver;
    facts.hostName = host;
    facts.hostsFile = hosts;
    QCOMPARE(localDomain(facts), expected);
}

void TestLocalIP::everythingIsThere()
{
    LocalIP control(complete);
    QCOMPARE(control.IPAddress(), QString());
    QCOMPARE(noticesOf(control), QStringList());
    QCOMPARE(control.IPAddress(), u"192.0.2.7"_s);
    QCOMPARE(control.DomainName(), u"example.org"_s);
}

void TestLocalIP::theNoticesInOrder_data()
{
    QTest::addColumn<LocalFacts>("facts");
    QTest::addColumn<QStringList>("notices");
    LocalFacts facts = complete();
    facts.resolverDomain.clear();
    QTest::newRow("no domain") << facts << QStringList{u"NoDomainName"_s};
    facts.routed.clear();
    facts.interfaces = interfaces(u"eth0 fe80::1"_s);
    QTest::newRow("neither") << facts << QStringList{u"NoDomainName"_s, u"NoIPAddress"_s};
    facts.resolverDomain = u"example.org"_s;
    QTest::newRow("no address") << facts << QStringList{u"NoIPAddress"_s};
    facts.interfaces.clear();
    QTest::newRow("no network") << facts << QStringList{u"SocketError(True)"_s};
    QTest::newRow("nothing") << LocalFacts() << QStringList{u"SocketError(True)"_s, u"NoDomainName"_s};
}

void TestLocalIP::theNoticesInOrder()
{
    QFETCH(LocalFacts, facts);
    QFETCH(QStringList, notices);
    LocalIP control([facts] { return facts; });
    QCOMPARE(noticesOf(control), notices);
}

void TestLocalIP::falseAsksNothing()
{
    int asked = 0;
    LocalIP control([&asked] {
        ++asked;
        return LocalFacts();
    });
    const QSignalSpy spy(&control, &MyIP::SocketError);
    control.setQuery(false);
    QCOMPARE(asked, 0);
    QCOMPARE(spy.size(), 0);
}

void TestLocalIP::eachQueryAsksAnew()
{
    LocalFacts facts = complete();
    LocalIP control([&facts] { return facts; });
    control.setQuery(true);
    facts = LocalFacts();
    control.setQuery(true);
    QCOMPARE(control.IPAddress(), QString());
    QCOMPARE(control.DomainName(), QString());
}

void TestLocalIP::destroyedByTheFirstNotice()
{
    auto control = std::make_unique<LocalIP>([] { return LocalFacts(); });
    int later = 0;
    QObject::connect(control.get(), &MyIP::SocketError, this, [&] { control.reset(); });
    QObject::connect(control.get(), &MyIP::NoDomainName, this, [&] { ++later; });
    control->setQuery(true);
    QVERIFY(!control);
    QCOMPARE(later, 0);
}

// Whatever network this computer has: the address shown is one of its own, and no address is missed.
void TestLocalIP::thisComputer()
{
    LocalIP control;
    const QStringList notices = noticesOf(control);
    QStringList own;
    for (const QHostAddress &address : QNetworkInterface::allAddresses())
        own.append(address.toString());
    const bool hasAddress = !control.IPAddress().isEmpty();
    QCOMPARE(hasAddress, !notices.contains(u"SocketError(True)"_s) && !notices.contains(u"NoIPAddress"_s));
    QCOMPARE(control.DomainName().isEmpty(), notices.contains(u"NoDomainName"_s));
    if (hasAddress)
        QVERIFY2(own.contains(control.IPAddress()), qPrintable(control.IPAddress()));
}

QTEST_GUILESS_MAIN(TestLocalIP)
#include "TestLocalIP.moc"

#include <memory>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "platform/ping/EchoPing.h"
#include "platform/ping/LinuxEchoSocket.h"
#include "platform/ping/PosixPingCommand.h"
#include "tests/platform/ping/LinuxNetwork.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

using End = EchoOutcome::End;

// Counts the turns, and ends the wait with one of them.
class Turns final : public EchoPause
{
public:
    bool passTurn() override { return ++count != last; }

    int count = 0;
    int last = 0;
};

bool ownNetwork = false;

} // namespace

/// Echo requests for real, in each way: over the loopback, and to a neighbour and the networks behind it.
class TestEchoWays : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void loopback_data();
    void loopback();
    void aLocalNetworkOfAddresses_data() { ways(); }
    void aLocalNetworkOfAddresses();
    void dataOfAnyLength_data();
    void dataOfAnyLength();
    void theCommandsOwnData();
    void neighbour_data();
    void neighbour();
    void theDataOfAnotherReplyIsNotOurs_data() { sockets(); }
    void theDataOfAnotherReplyIsNotOurs();
    void foreignRepliesDoNotCount_data() { sockets(); }
    void foreignRepliesDoNotCount();
    void theTimeOfASlowReply_data() { ways(); }
    void theTimeOfASlowReply();
    void timeToLiveExceeded_data() { ways(); }
    void timeToLiveExceeded();
    void silenceEndsWithTheTimeOut_data() { ways(); }
    void silenceEndsWithTheTimeOut();
    void aCancelledWaitEndsAtOnce_data() { ways(); }
    void aCancelledWaitEndsAtOnce();
    void withoutPermissionAnotherWayIsTried();
    void aMissingCommandIsNotPermitted_data();
    void aMissingCommandIsNotPermitted();
    void aCommandThatSaysSomethingElse_data();
    void aCommandThatSaysSomethingElse();
    void theControlPingsThroughWhatIsPermitted();

private:
    static void ways();
    static void sockets();
    static std::shared_ptr<EchoWay> way(const QString &name);
    static bool isPermitted(const QString &name);
    static bool answers(const QString &address);
    EchoOutcome ask(const QString &address, const QByteArray &data = "abc", int timeOut = 3000);

    std::unique_ptr<Neighbour> m_neighbour;
    Turns m_turns;
    EchoOutcome m_withoutLeave;
    EchoPing m_pingWithoutLeave{{{way(u"datagram"_s), way(u"raw"_s)}, NameLookup::systemResolver(), 1000}};
};

void TestEchoWays::ways()
{
    QTest::addColumn<QString>("way");
    for (const char *name : {"datagram", "raw", "command"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestEchoWays::sockets()
{
    QTest::addColumn<QString>("way");
    for (const char *name : {"datagram", "raw"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

std::shared_ptr<EchoWay> TestEchoWays::way(const QString &name)
{
    if (name == u"command")
        return std::make_shared<PosixPingCommand>();
    return std::make_shared<LinuxEchoSocket>(name == u"raw" ? LinuxEchoSocket::Kind::Raw
                                                            : LinuxEchoSocket::Kind::Datagram);
}

bool TestEchoWays::isPermitted(const QString &name)
{
    Turns turns;
    return way(name)->ask({QHostAddress(u"127.0.0.1"_s), "x", 5000}, turns).end != End::NotPermitted;
}

// Asks in the way of the current row.
EchoOutcome TestEchoWays::ask(const QString &address, const QByteArray &data, int timeOut)
{
    m_turns = {};
    const QString name = QString::fromLatin1(QTest::currentDataTag()).section(u' ', 0, 0);
    return way(name)->ask({QHostAddress(address), data, timeOut}, m_turns);
}

#define REQUIRE_WAY(name)                                                                                    \
    if (!isPermitted(name))                                                                                  \
    QSKIP("the system does not permit this way here")
#define REQUIRE_NEIGHBOUR                                                                                    \
    if (!m_neighbour)                                                                                        \
    QSKIP("the system does not allow networks of the test's own here")

void TestEchoWays::initTestCase()
{
    if (!ownNetwork)
        return;
    // A network begins without the leave, and an ordinary user could not take it back.
    Turns turns;
    m_withoutLeave = way(u"datagram"_s)->ask({QHostAddress(u"127.0.0.1"_s), "abc", 5000}, turns);
    m_pingWithoutLeave.setHost(u"127.0.0.1"_s);
    m_pingWithoutLeave.setPing(true);
    QVERIFY(permitDatagrams());
    m_neighbour = std::make_unique<Neighbour>();
    if (!m_neighbour->isThere())
        m_neighbour.reset();
    // A link takes a moment until it carries anything.
    for (const char *address : {"10.77.0.2", "fd77::2"})
        QTRY_VERIFY_WITH_TIMEOUT(!m_neighbour || answers(QString::fromLatin1(address)), 20'000);
}

bool TestEchoWays::answers(const QString &address)
{
    Turns turns;
    return way(u"datagram"_s)->ask({QHostAddress(address), "abc", 1000}, turns).end == End::Replied;
}

void TestEchoWays::loopback_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("address");
    for (const char *name : {"datagram", "raw", "command"}) {
        for (const char *address : {"127.0.0.1", "127.0.0.254", "::1"})
            QTest::addRow("%s %s", name, address)
                << QString::fromLatin1(name) << QString::fromLatin1(address);
    }
}

void TestEchoWays::loopback()
{
    QFETCH(QString, way);
    QFETCH(QString, address);
    REQUIRE_WAY(way);
    const EchoOutcome outcome = ask(address);
    QCOMPARE(outcome.end, End::Replied);
    QCOMPARE(outcome.data.value_or("none"), "abc");
    QCOMPARE(outcome.dataSize, 3);
    QCOMPARE(outcome.reporter, address);
    QVERIFY(outcome.nanoseconds > 0);
    QCOMPARE(outcome.timeIsBound, way == u"command");
}

void TestEchoWays::aLocalNetworkOfAddresses()
{
    QFETCH(QString, way);
    REQUIRE_WAY(way);
    for (int last = 1; last < 255; last += way == u"command" ? 50 : 1) {
        const QByteArray data = ' ' + QByteArray::number(last);
        const EchoOutcome outcome = ask(u"127.0.0.%1"_s.arg(last), data);
        QCOMPARE(outcome.end, End::Replied);
        QCOMPARE(outcome.data.value_or("none"), data);
    }
}

void TestEchoWays::dataOfAnyLength_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("size");
    for (const char *name : {"datagram", "raw"}) {
        for (const int size : {0, 1, 15, 16, 1400, 1473, 65507}) {
            QTest::addRow("%s %d", name, size) << QString::fromLatin1(name) << u"127.0.0.1"_s << size;
            QTest::addRow("%s IPv6 %d", name, size) << QString::fromLatin1(name) << u"::1"_s << size;
        }
        QTest::addRow("%s IPv6 65527", name) << QString::fromLatin1(name) << u"::1"_s << 65527;
    }
    for (const int size : {0, 1, 15})
        QTest::addRow("command %d", size) << u"command"_s << u"127.0.0.1"_s << size;
}

void TestEchoWays::dataOfAnyLength()
{
    QFETCH(QString, way);
    QFETCH(QString, address);
    QFETCH(int, size);
    REQUIRE_WAY(way);
    QByteArray data(size, '\0');
    for (int at = 0; at < size; ++at)
        data[at] = static_cast<char>(at * 7);
    const EchoOutcome outcome = ask(address, data);
    QCOMPARE(outcome.end, End::Replied);
    QVERIFY(outcome.data == data);
    QCOMPARE(outcome.dataSize, size);
}

void TestEchoWays::theCommandsOwnData()
{
    REQUIRE_WAY(u"command"_s);
    Turns turns;
    const QByteArray data(1000, 'x');
    const EchoOutcome outcome = way(u"command"_s)->ask({QHostAddress(u"127.0.0.1"_s), data, 3000}, turns);
    QCOMPARE(outcome.end, End::Replied);
    QVERIFY(!outcome.data);
    QCOMPARE(outcome.dataSize, 1000);
    QVERIFY(!outcome.timeIsBound);
}

void TestEchoWays::neighbour_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("address");
    QTest::addColumn<End>("end");
    QTest::addColumn<EchoRefusal>("refusal");
    QTest::addColumn<QString>("reporter");
    struct Row {
        const char *name;
        const char *address;
        End end;
        EchoRefusal refusal;
        const char *reporter;
    };
    const Row rows[] = {
        {"there", "10.77.0.2", End::Replied, EchoRefusal::Other, "10.77.0.2"},
        {"there, IPv6", "fd77::2", End::Replied, EchoRefusal::Other, "fd77::2"},
        {"not there", "10.77.0.9", End::Refused, EchoRefusal::HostUnreachable, "10.77.0.1"},
        {"not there, IPv6", "fd77::9", End::Refused, EchoRefusal::HostUnreachable, "fd77::1"},
        {"unreachable", "10.78.1.1", End::Refused, EchoRefusal::HostUnreachable, "10.77.0.2"},
        {"unreachable, IPv6", "fd78:1::1", End::Refused, EchoRefusal::NetworkUnreachable, "fd77::2"},
        {"forbidden", "10.78.2.1", End::Refused, EchoRefusal::Forbidden, "10.77.0.2"},
        {"slow", "10.78.3.1", End::Replied, EchoRefusal::Other, "10.78.3.1"},
        {"no route", "203.0.113.1", End::NoRoute, EchoRefusal::Other, ""},
        {"no route, IPv6", "2001:db8::1", End::NoRoute, EchoRefusal::Other, ""},
        {"broadcast", "10.77.0.255", End::NotAllowed, EchoRefusal::Other, ""},
    };
    for (const char *name : {"datagram", "raw", "command"}) {
        for (const Row &row : rows)
            QTest::addRow("%s %s", name, row.name)
                << QString::fromLatin1(name) << QString::fromLatin1(row.address) << row.end << row.refusal
                << QString::fromLatin1(row.reporter);
    }
}

void TestEchoWays::neighbour()
{
    QFETCH(QString, way);
    QFETCH(QString, address);
    QFETCH(End, end);
    QFETCH(EchoRefusal, refusal);
    QFETCH(QString, reporter);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    const EchoOutcome outcome = ask(address, "abc", 10'000);
    QCOMPARE(outcome.end, end);
    QCOMPARE(outcome.refusal, refusal);
    QCOMPARE(outcome.reporter, reporter);
}

void TestEchoWays::theDataOfAnotherReplyIsNotOurs()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    for (const char *address : {"10.78.3.2", "10.78.3.6"}) {
        const EchoOutcome outcome = ask(QString::fromLatin1(address), "abc", 400);
        QCOMPARE(outcome.end, End::Silent);
        QVERIFY(outcome.otherDataCame);
    }
}

void TestEchoWays::foreignRepliesDoNotCount()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    // Other requests' replies come at once, the right one later.
    const EchoOutcome late = ask(u"10.78.3.3"_s);
    QCOMPARE(late.end, End::Replied);
    QVERIFY(late.nanoseconds > 200'000'000);
    // Another host's reply, and cut ones.
    for (const char *address : {"10.78.3.4", "10.78.3.5"}) {
        const EchoOutcome outcome = ask(QString::fromLatin1(address), "abc", 400);
        QCOMPARE(outcome.end, End::Silent);
        QVERIFY(!outcome.otherDataCame);
    }
}

void TestEchoWays::theTimeOfASlowReply()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    const EchoOutcome outcome = ask(u"10.78.3.1"_s);
    QCOMPARE(outcome.end, End::Replied);
    QVERIFY(outcome.nanoseconds >= 240'000'000);
    QVERIFY(m_turns.count > 3);
    QCOMPARE(ask(u"10.78.3.1"_s, "abc", 50).end, End::Silent);
}

void TestEchoWays::timeToLiveExceeded()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    const auto setLife = [](const char *hops) {
        QFile file(u"/proc/sys/net/ipv4/ip_default_ttl"_s);
        return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(hops) > 0;
    };
    QVERIFY(setLife("1"));
    const EchoOutcome outcome = ask(u"10.78.4.1"_s);
    QVERIFY(setLife("64"));
    QCOMPARE(outcome.end, End::Refused);
    QCOMPARE(outcome.refusal, EchoRefusal::TimeToLiveExceeded);
    QCOMPARE(outcome.reporter, u"10.77.0.2"_s);
}

void TestEchoWays::silenceEndsWithTheTimeOut()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    QElapsedTimer elapsed;
    elapsed.start();
    const EchoOutcome outcome = ask(u"10.78.3.99"_s, "abc", 150);
    QCOMPARE(outcome.end, End::Silent);
    QVERIFY(!outcome.otherDataCame);
    QVERIFY(elapsed.elapsed() >= 149);
    QVERIFY(m_turns.count > 1);
}

void TestEchoWays::aCancelledWaitEndsAtOnce()
{
    QFETCH(QString, way);
    REQUIRE_NEIGHBOUR;
    REQUIRE_WAY(way);
    Turns turns;
    turns.last = 2;
    const EchoOutcome outcome
        = TestEchoWays::way(way)->ask({QHostAddress(u"10.78.3.99"_s), "abc", 30'000}, turns);
    QCOMPARE(outcome.end, End::Cancelled);
    QCOMPARE(turns.count, 2);
}

void TestEchoWays::withoutPermissionAnotherWayIsTried()
{
    if (!ownNetwork)
        QSKIP("the system does not allow networks of the test's own here");
    QCOMPARE(m_withoutLeave.end, End::NotPermitted);
    QVERIFY2(!m_pingWithoutLeave.ErrorFlag(), qPrintable(m_pingWithoutLeave.StatusText()));
}

void TestEchoWays::aMissingCommandIsNotPermitted_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("not there") << u"/nonexistent/ping"_s;
    QTest::newRow("no program") << u"/"_s;
}

void TestEchoWays::aMissingCommandIsNotPermitted()
{
    QFETCH(QString, program);
    Turns turns;
    PosixPingCommand command(program);
    QCOMPARE(command.ask({QHostAddress(u"127.0.0.1"_s), "abc", 1000}, turns).end, End::NotPermitted);
}

void TestEchoWays::aCommandThatSaysSomethingElse_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<End>("end");
    QTest::addColumn<QString>("detail");
    QTest::newRow("nothing") << QByteArray("") << End::Failed << QString();
    QTest::newRow("a reason of its own") << QByteArray("echo 'ping: the moon is full' >&2; exit 2")
                                         << End::Failed << u"ping: the moon is full"_s;
    QTest::newRow("no right") << QByteArray("echo 'ping: socktype: SOCK_RAW' >&2\n"
                                            "echo 'ping: socket: Operation not permitted' >&2; exit 2")
                              << End::NotPermitted << QString();
    QTest::newRow("no end of words") << QByteArray("exec yes words") << End::Failed << u"words"_s;
    QTest::newRow("another length") << QByteArray(
        "echo '64 bytes from 127.0.0.1: icmp_seq=1 ttl=64 time=0.1 ms'")
                                    << End::Silent << QString();
    QTest::newRow("its words, and no end") << QByteArray("echo '11 bytes from 127.0.0.1: icmp_seq=1 ttl=64'; "
                                                         "exec sleep 600")
                                           << End::Replied << QString();
    QTest::newRow("closed ears") << QByteArray("exec >&- 2>&-; exec sleep 600") << End::Failed << QString();
}

void TestEchoWays::aCommandThatSaysSomethingElse()
{
    QFETCH(QByteArray, script);
    QFETCH(End, end);
    QFETCH(QString, detail);
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"ping"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nPATH=/usr/bin:/bin\n" + script + '\n');
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    Turns turns;
    PosixPingCommand command(file.fileName());
    const EchoOutcome outcome = command.ask({QHostAddress(u"127.0.0.1"_s), "abc", 30'000}, turns);
    QCOMPARE(outcome.end, end);
    QCOMPARE(outcome.detail, detail);
}

void TestEchoWays::theControlPingsThroughWhatIsPermitted()
{
    if (!isPermitted(u"datagram"_s) && !isPermitted(u"raw"_s) && !isPermitted(u"command"_s))
        QSKIP("the system permits no way here");
    EchoPing ping;
    for (const char *host : {"127.0.0.1", "127.0.0. 5", "::1", "localhost"}) {
        ping.setHost(QString::fromLatin1(host));
        ping.setDataToSend(u" 5"_s);
        ping.setTimeOut(5000);
        ping.setPing(true);
        QVERIFY2(!ping.ErrorFlag(), qPrintable(ping.StatusText()));
        QCOMPARE(ping.EchoData(), u" 5"_s);
        QCOMPARE(ping.DataSize(), 2);
    }
}

int main(int argc, char **argv)
{
    ownNetwork = enterOwnNetwork();
    QCoreApplication application(argc, argv);
    TestEchoWays tests;
    return QTest::qExec(&tests, argc, argv);
}

#include "TestEchoWays.moc"

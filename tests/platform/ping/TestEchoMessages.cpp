#include <QTest>

#include "platform/ping/EchoPacket.h"
#include "platform/ping/EchoStatus.h"
#include "platform/ping/PingCommandOutput.h"
#include "platform/ping/PingTarget.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {
using End = EchoOutcome::End;
} // namespace

/// What is read around an echo: packets, the words of the system's ping, hosts as typed; and what the user is told.
class TestEchoMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests();
    void replies_data();
    void replies();
    void replyInPieces();
    void requestKeys();
    void packetHeaders_data();
    void packetHeaders();
    void refusals_data();
    void refusals();
    void commandOutput_data();
    void commandOutput();
    void commandOutputByteByByte();
    void undecidedOutput();
    void targets_data();
    void targets();
    void statusTexts_data();
    void statusTexts();
};

void TestEchoMessages::requests()
{
    QCOMPARE(echoRequest(EchoFamily::IPv4, {0x1234, 0x0102}, "abc"),
             QByteArray::fromHex("0800206712340102616263"));
    QCOMPARE(echoRequest(EchoFamily::IPv6, {0x1234, 0x0102}, "abc"),
             QByteArray::fromHex("8000000012340102616263"));
    QCOMPARE(echoRequest(EchoFamily::IPv4, {}, ""), QByteArray::fromHex("0800f7ff00000000"));
    QCOMPARE(mostEchoData(EchoFamily::IPv4), 65507);
    QCOMPARE(mostEchoData(EchoFamily::IPv6), 65527);
}

void TestEchoMessages::replies_data()
{
    QTest::addColumn<EchoFamily>("family");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("isReply");
    const auto row = [](const char *name, EchoFamily family, const char *hex, bool isReply) {
        QTest::newRow(name) << family << QByteArray::fromHex(hex) << isReply;
    };
    row("IPv4", EchoFamily::IPv4, "0000000012340102616263", true);
    row("IPv6", EchoFamily::IPv6, "8100000012340102616263", true);
    row("a request", EchoFamily::IPv4, "0800000012340102616263", false);
    row("of the other protocol", EchoFamily::IPv4, "8100000012340102616263", false);
    row("with a code", EchoFamily::IPv4, "0001000012340102616263", false);
    row("an error message", EchoFamily::IPv4, "0301000000000000450000", false);
    row("cut", EchoFamily::IPv4, "00000000123401", false);
    row("empty", EchoFamily::IPv6, "", false);
}

void TestEchoMessages::replies()
{
    QFETCH(EchoFamily, family);
    QFETCH(QByteArray, message);
    QFETCH(bool, isReply);
    const auto reply = readEchoReply(family, message);
    QCOMPARE(reply.has_value(), isReply);
    if (isReply) {
        QVERIFY(reply->key == (EchoKey{0x1234, 0x0102}));
        QCOMPARE(reply->data.toByteArray(), "abc");
    }
}

void TestEchoMessages::replyInPieces()
{
    const QByteArray whole = QByteArray::fromHex("0000000012340102616263");
    for (qsizetype size = 0; size <= whole.size(); ++size)
        QCOMPARE(readEchoReply(EchoFamily::IPv4, QByteArrayView(whole).first(size)).has_value(), size >= 8);
}

void TestEchoMessages::requestKeys()
{
    for (const EchoFamily family : {EchoFamily::IPv4, EchoFamily::IPv6}) {
        const QByteArray request = echoRequest(family, {7, 9}, "abc");
        QVERIFY(readEchoRequestKey(family, request) == (EchoKey{7, 9}));
        QVERIFY(readEchoRequestKey(family, QByteArrayView(request).first(8)) == (EchoKey{7, 9}));
        QVERIFY(!readEchoRequestKey(family, QByteArrayView(request).first(7)));
    }
    QVERIFY(!readEchoRequestKey(EchoFamily::IPv4, QByteArray::fromHex("0000000012340102")));
}

void TestEchoMessages::packetHeaders_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<QByteArray>("rest");
    const QByteArray fields(19, 'h');
    QTest::newRow("plain") << '\x45' + fields + "rest" << QByteArray("rest");
    QTest::newRow("options") << '\x47' + fields + "12345678rest" << QByteArray("rest");
    QTest::newRow("no data") << '\x45' + fields << QByteArray();
    QTest::newRow("options cut") << '\x4F' + fields + "1234" << QByteArray();
    QTest::newRow("too short a header") << '\x44' + fields + "rest" << QByteArray();
    QTest::newRow("another version") << '\x65' + fields + "rest" << QByteArray();
    QTest::newRow("cut") << '\x45' + fields.left(18) << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray();
}

void TestEchoMessages::packetHeaders()
{
    QFETCH(QByteArray, packet);
    QFETCH(QByteArray, rest);
    QCOMPARE(withoutIPv4Header(packet).toByteArray(), rest);
}

void TestEchoMessages::refusals_data()
{
    QTest::addColumn<EchoFamily>("family");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("code");
    QTest::addColumn<EchoRefusal>("refusal");
    struct Row {
        EchoFamily family;
        int type;
        int code;
        EchoRefusal refusal;
    };
    constexpr EchoFamily v4 = EchoFamily::IPv4;
    constexpr EchoFamily v6 = EchoFamily::IPv6;
    const Row rows[] = {
        {v4, 3, 0, EchoRefusal::NetworkUnreachable},
        {v4, 3, 1, EchoRefusal::HostUnreachable},
        {v4, 3, 2, EchoRefusal::ProtocolUnreachable},
        {v4, 3, 3, EchoRefusal::PortUnreachable},
        {v4, 3, 4, EchoRefusal::PacketTooBig},
        {v4, 3, 13, EchoRefusal::Forbidden},
        {v4, 3, 200, EchoRefusal::Other},
        {v4, 11, 0, EchoRefusal::TimeToLiveExceeded},
        {v4, 12, 0, EchoRefusal::Other},
        {v4, 2, 0, EchoRefusal::Other},
        {v6, 1, 0, EchoRefusal::NetworkUnreachable},
        {v6, 1, 1, EchoRefusal::Forbidden},
        {v6, 1, 3, EchoRefusal::HostUnreachable},
        {v6, 1, 4, EchoRefusal::PortUnreachable},
        {v6, 1, 99, EchoRefusal::Other},
        {v6, 2, 0, EchoRefusal::PacketTooBig},
        {v6, 3, 0, EchoRefusal::TimeToLiveExceeded},
        {v6, 11, 0, EchoRefusal::Other},
    };
    for (const Row &row : rows)
        QTest::addRow("IPv%d type %d code %d", row.family == v4 ? 4 : 6, row.type, row.code)
            << row.family << row.type << row.code << row.refusal;
}

void TestEchoMessages::refusals()
{
    QFETCH(EchoFamily, family);
    QFETCH(int, type);
    QFETCH(int, code);
    QFETCH(EchoRefusal, refusal);
    QCOMPARE(echoRefusal(family, static_cast<quint8>(type), static_cast<quint8>(code)), refusal);
}

void TestEchoMessages::commandOutput_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<bool>("decides");
    QTest::addColumn<End>("end");
    QTest::addColumn<QString>("reporter");
    const auto row = [](const char *name, const char *line, End end, const char *reporter = "") {
        QTest::newRow(name) << QByteArray("PING 192.0.2.1 (192.0.2.1) 5(33) bytes of data.\n") + line + '\n'
                            << true << end << QString::fromLatin1(reporter);
    };
    row("a reply", "13 bytes from 192.0.2.1: icmp_seq=1 ttl=64", End::Replied, "192.0.2.1");
    row("with its time", "64 bytes from ::1: icmp_seq=1 ttl=64 time=0.196 ms", End::Replied, "::1");
    row("with a scope", "64 bytes from fe80::1%eth0: icmp_seq=1 ttl=64 time=12 ms", End::Replied,
        "fe80::1%eth0");
    row("silence", "1 packets transmitted, 0 received, 100% packet loss, time 0ms", End::Silent);
    row("silence with errors", "1 packets transmitted, 0 received, +1 errors, 100% packet loss, time 0ms",
        End::Silent);
    row("a host not found", "From 10.0.0.1 icmp_seq=1 Destination Host Unreachable", End::Refused,
        "10.0.0.1");
    row("the same, IPv6", "From fd77::1 icmp_seq=1 Destination unreachable: Address unreachable",
        End::Refused, "fd77::1");
    row("with a colon", "From fd77::1%eth0: icmp_seq=1 Time exceeded: Hop limit", End::Refused,
        "fd77::1%eth0");
    row("no route", "ping: connect: Network is unreachable", End::NoRoute);
    row("a broadcast",
        "ping: Do you want to ping broadcast? Then -b. If not, check your local firewall rules",
        End::NotAllowed);
    row("a firewall", "ping: sendmsg: Operation not permitted", End::Filtered);
    row("no right", "ping: socket: Operation not permitted", End::NotPermitted);
    row("no right in other words", "ping: => missing cap_net_raw+p capability or setuid?", End::NotPermitted);
    row("too long", "ping: local error: message too long, mtu=1500", End::TooLong);

    const auto none = [](const char *name, const QByteArray &output) {
        QTest::newRow(name) << output << false << End::Failed << QString();
    };
    none("nothing", "");
    none("an open line", "13 bytes from 192.0.2.1: icmp_seq=1 ttl=64");
    none("a copy", "64 bytes from 192.0.2.1: icmp_seq=1 ttl=64 time=0.1 ms (DUP!)\n");
    none("from elsewhere", "64 bytes from 192.0.2.9: icmp_seq=1 ttl=64 time=0.1 ms (DIFFERENT ADDRESS!)\n");
    none("cut", "20 bytes from 192.0.2.1: icmp_seq=1 ttl=64 (truncated)\n");
    none("another request", "64 bytes from 192.0.2.1: icmp_seq=2 ttl=64 time=0.1 ms\n");
    none("less than a header", "7 bytes from 192.0.2.1: icmp_seq=1 ttl=64\n");
    none("more than a packet", "640000 bytes from 192.0.2.1: icmp_seq=1 ttl=64\n");
    none("a name", "64 bytes from host.example.org: icmp_seq=1 ttl=64 time=0.1 ms\n");
    none("words in a line's end", QByteArray(600, ' ') + "ping: connect: Network is unreachable\n");
    none("received some", "10 packets transmitted, 10 received, 0% packet loss, time 0ms\n");
    none("octets", QByteArray("\xff\xfe\0\n\n\r\n", 7));
}

void TestEchoMessages::commandOutput()
{
    QFETCH(QByteArray, output);
    QFETCH(bool, decides);
    QFETCH(End, end);
    QFETCH(QString, reporter);
    const auto outcome = readPingCommandOutput(output);
    QCOMPARE(outcome.has_value(), decides);
    if (decides) {
        QCOMPARE(outcome->end, end);
        QCOMPARE(outcome->reporter, reporter);
    }
}

void TestEchoMessages::commandOutputByteByByte()
{
    const QByteArray output
        = "PING ::1(::1) 20 data bytes\n28 bytes from ::1: icmp_seq=1 ttl=64 time=0.196 ms\n";
    for (qsizetype size = 0; size < output.size(); ++size)
        QVERIFY(!readPingCommandOutput(QByteArrayView(output).first(size)));
    const auto outcome = readPingCommandOutput(output);
    QVERIFY(outcome);
    QCOMPARE(outcome->dataSize, 20);
    QCOMPARE(outcome->nanoseconds, 196'000);
    QVERIFY(!outcome->timeIsBound);
}

void TestEchoMessages::undecidedOutput()
{
    QCOMPARE(undecidedPingCommandOutput("").detail, QString());
    QCOMPARE(undecidedPingCommandOutput("ping: bad number\nUsage:\n").detail, u"ping: bad number"_s);
    const EchoOutcome outcome = undecidedPingCommandOutput(QByteArray("a\x1b[31m\t") + QByteArray(5000, 'x'));
    QCOMPARE(outcome.end, End::Failed);
    QCOMPARE(outcome.detail.size(), 200);
    QVERIFY(outcome.detail.startsWith(u"a [31m "_s));
}

void TestEchoMessages::targets_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("name");
    const auto address = [](const char *typed, const char *expected) {
        QTest::newRow(typed) << QString::fromUtf8(typed) << QString::fromUtf8(expected) << QString();
    };
    const auto name = [](const char *typed, const char *expected) {
        QTest::newRow(typed) << QString::fromUtf8(typed) << QString() << QString::fromUtf8(expected);
    };
    const auto neither = [](const char *typed) {
        QTest::newRow(typed) << QString::fromUtf8(typed) << QString() << QString();
    };
    address("192.0.2.5", "192.0.2.5");
    address("192.0.2. 5", "192.0.2.5");
    address("  192.0.2.  5 ", "192.0.2.5");
    address("::1", "::1");
    address("2001:db8:: 5", "2001:db8::5");
    address("fe80::1%lo", "fe80::1%lo");
    name("localhost", "localhost");
    name("Mail.Example.ORG.", "mail.example.org");
    name("host 5", "host5");
    name("3com", "3com");
    name("bücher.example", "xn--bcher-kva.example");
    neither("");
    neither("   ");
    neither("192.0.2.256");
    neither("192.0.2. 32767");
    neither("192.0.2.-5");
    neither("192.0.2");
    neither("192.0.2 5");
    neither("192.0.2.05");
    neither("192.0.2.5.6");
    neither("127.1");
    neither("3232235777");
    neither("two hosts");
    neither("host\tname");
    neither("-rf");
    neither("host/24");
    neither("[::1]");
    neither("::1::");
    neither("a..b");
}

void TestEchoMessages::targets()
{
    QFETCH(QString, typed);
    QFETCH(QString, address);
    QFETCH(QString, name);
    const PingTarget target = PingTarget::parse(typed);
    QCOMPARE(target.address.toString(), address);
    QCOMPARE(target.name, name);
    QCOMPARE(target.problem.isEmpty(), !address.isEmpty() || !name.isEmpty());
    const PingTarget endless = PingTarget::parse(u"x"_s.repeated(100'000) + typed);
    QVERIFY(!endless.problem.isEmpty());
    QVERIFY(endless.problem.size() < 200);
}

void TestEchoMessages::statusTexts_data()
{
    QTest::addColumn<EchoOutcome>("outcome");
    QTest::addColumn<QString>("text");
    EchoOutcome reply;
    reply.end = End::Replied;
    reply.data = "abc";
    reply.dataSize = 3;
    reply.nanoseconds = 1'234'000;
    QTest::newRow("a reply") << reply << u"Reply from desk (192.0.2.1): 3 bytes in 1.23 ms."_s;
    reply.nanoseconds = 123'456'000;
    reply.timeIsBound = true;
    QTest::newRow("a reply timed from outside")
        << reply << u"Reply from desk (192.0.2.1): 3 bytes in less than 123 ms."_s;
    EchoOutcome silent = EchoOutcome::failed(End::Silent);
    QTest::newRow("silence") << silent << u"No reply from desk (192.0.2.1) within 500 ms."_s;
    silent.otherDataCame = true;
    QTest::newRow("other data")
        << silent
        << u"No reply from desk (192.0.2.1) within 500 ms. What came back was not the data that "
           "was sent."_s;
    EchoOutcome refused = EchoOutcome::failed(End::Refused);
    refused.refusal = EchoRefusal::HostUnreachable;
    refused.reporter = u"192.0.2.254"_s;
    QTest::newRow("no such host")
        << refused << u"desk (192.0.2.1) cannot be reached: 192.0.2.254 does not find the host."_s;
    refused.refusal = EchoRefusal::TimeToLiveExceeded;
    refused.reporter.clear();
    QTest::newRow("time to live")
        << refused
        << u"desk (192.0.2.1) was not reached: the request had passed as many hosts as it may "
           "when it came to a host on the way."_s;
    QTest::newRow("no route") << EchoOutcome::failed(End::NoRoute)
                              << u"desk (192.0.2.1) cannot be reached: this computer knows no way to it."_s;
    QTest::newRow("the system's words") << EchoOutcome::failed(End::Failed, u"No buffer space available"_s)
                                        << u"desk (192.0.2.1) was not pinged: No buffer space available."_s;
    QTest::newRow("stopped") << EchoOutcome::failed(End::Cancelled)
                             << u"The ping of desk (192.0.2.1) was stopped."_s;
}

void TestEchoMessages::statusTexts()
{
    QFETCH(EchoOutcome, outcome);
    QFETCH(QString, text);
    QCOMPARE(echoStatus(u"desk"_s, {QHostAddress(u"192.0.2.1"_s), "abc", 500}, outcome), text);
    const QString bare = echoStatus(u"192.0.2.1"_s, {QHostAddress(u"192.0.2.1"_s), "abc", 500}, outcome);
    QCOMPARE(bare, QString(text).replace(u"desk (192.0.2.1)"_s, u"192.0.2.1"_s));
    // The zone of an address looks like a place for the next value.
    const QString zoned = echoStatus(u"fe80::1%2"_s, {QHostAddress(u"fe80::1%2"_s), "abc", 500}, outcome);
    QCOMPARE(zoned, QString(text).replace(u"desk (192.0.2.1)"_s, u"fe80::1%2"_s));
}

QTEST_GUILESS_MAIN(TestEchoMessages)
#include "TestEchoMessages.moc"

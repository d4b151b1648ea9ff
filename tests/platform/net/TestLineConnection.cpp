#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "platform/net/LineConnection.h"
#include "tests/platform/net/ScriptedServer.h"

using namespace vandrel;

namespace {

constexpr int longestWait = 60'000;

using Failure = LineConnection::Failure;

/// A connection that writes down what it reports.
struct Client {
    std::unique_ptr<LineConnection> connection = std::make_unique<LineConnection>();
    QByteArrayList lines;
    QByteArray blocks;
    QStringList progress;
    int connected = 0;
    int encrypted = 0;
    int closed = 0;
    std::vector<std::pair<Failure, QString>> failures;

    Client()
    {
        LineConnection *c = connection.get();
        QObject::connect(c, &LineConnection::lineReceived, [this](const QByteArray &line) { lines += line; });
        QObject::connect(c, &LineConnection::blockReceived,
                         [this](QByteArrayView block) { blocks.append(block.data(), block.size()); });
        QObject::connect(c, &LineConnection::progress, [this](const QString &text) { progress += text; });
        QObject::connect(c, &LineConnection::connected, [this] { ++connected; });
        QObject::connect(c, &LineConnection::encrypted, [this] { ++encrypted; });
        QObject::connect(c, &LineConnection::closed, [this] { ++closed; });
        QObject::connect(c, &LineConnection::failed, [this](Failure failure, const QString &text) {
            failures.emplace_back(failure, text);
        });
    }

    void open(const QTcpServer &server, bool tls = false)
    {
        connection->open(server.serverAddress().toString(), server.serverPort(), tls);
    }
    bool hasEnded() const { return closed + static_cast<int>(failures.size()) > 0; }
    LineConnection *operator->() const { return connection.get(); }
};

/// Takes no connection, so that nobody reads what is sent.
class DeafServer : public QTcpServer
{
public:
    DeafServer()
    {
        listen(QHostAddress::LocalHost);
        pauseAccepting();
    }
};

LineConnection::Limits shortLimits()
{
    LineConnection::Limits limits;
    limits.connecting = 300;
    limits.idle = 300;
    limits.closing = 300;
    return limits;
}

} // namespace

/// Stands for an owner that destroys its connection in one of its signals.
class Destroyer : public QObject
{
    Q_OBJECT

public:
    explicit Destroyer(LineConnection *connection) : m_connection(connection) { }

public Q_SLOTS:
    void destroy() { delete m_connection; }

private:
    LineConnection *m_connection;
};

class TestLineConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void linesAreDelivered();
    void linesArriveByteByByte();
    void aLastUnfinishedLineIsDropped();
    void aLongLineIsRefused();
    void aFloodLeavesTheLoopAlive();
    void blocksAndLinesInTurn();
    void pausingHoldsTheServer();
    void commandsCannotBeSmuggled_data();
    void commandsCannotBeSmuggled();
    void writingIsBounded_data();
    void writingIsBounded();
    void whatFitsIsWritten_data();
    void whatFitsIsWritten();
    void littleWaitsInTheSystem();
    void abortingWhileThereIsNoRoom();

    void implicitTls();
    void startTls();
    void textBehindTheAgreementIsRefused();
    void certificates_data();
    void certificates();
    void aPlainServerIsNotTls();
    void aServerThatHangsUpInTheHandshake();
    void theEndOfTls_data();
    void theEndOfTls();
    void aSilentHandshakeEnds();

    void nobodyListens();
    void anUnknownNameFails();
    void bothFamiliesAreTried();
    void ipv6();
    void silenceEndsWhatIsAwaited();
    void octetsAreNoProgressOfALine();
    void silenceIsNoFailureWhileNothingIsAwaited();
    void everythingIsDeliveredBeforeTheEnd();
    void closingSendsWhatWaits();
    void closingEndsWithoutTheServer();
    void finishingWaitsForTheServer_data();
    void finishingWaitsForTheServer();
    void finishingEndsWithoutTheServer();
    void abortingIsSilent_data();
    void abortingIsSilent();
    void destroyedInEverySignal_data();
    void destroyedInEverySignal();
    void canBeOpenedAgain();

private:
    std::unique_ptr<TestCertificates> m_certificates;
};

void TestLineConnection::initTestCase()
{
    m_certificates = std::make_unique<TestCertificates>();
    QVERIFY2(m_certificates->isUsable(), qPrintable(m_certificates->problem()));
}

void TestLineConnection::cleanupTestCase()
{
    m_certificates.reset();
}

// --- Lines and blocks -------------------------------------------------------------------------------------------

void TestLineConnection::linesAreDelivered()
{
    ScriptedServer server(
        {say("one\r\ntwo\nthree\r\r\n\r\n"), hear("hello"), say(QByteArray("fo\0ur\r\n", 7)), hangUp()});
    Client client;
    client.open(server);
    QCOMPARE(client.connected, 0);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    QVERIFY(client->sendLine("hello"));
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, (QByteArrayList{"one", "two", "three\r", "", QByteArray("fo\0ur", 5)}));
    QCOMPARE(client.closed, 1);
    QVERIFY(client->peerAnnouncedEnd());
    QCOMPARE(server.heard(), QByteArrayList{"hello"});
}

void TestLineConnection::linesArriveByteByByte()
{
    ScriptedServer server({sayInOctets("first\r\nsecond\r\n"), hangUp()});
    Client client;
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, (QByteArrayList{"first", "second"}));
}

void TestLineConnection::aLastUnfinishedLineIsDropped()
{
    ScriptedServer server({say("whole\r\nhal"), hangUp()});
    Client client;
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
    QCOMPARE(client.lines, QByteArrayList{"whole"});
    QVERIFY(client.failures.empty());
}

void TestLineConnection::aLongLineIsRefused()
{
    ScriptedServer server({say(QByteArray(16 * 1024 - 2, 'a') + "\r\n" + QByteArray(1024 * 1024, 'b'))});
    Client client;
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines.size(), 1);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Protocol);
    QVERIFY2(client.failures.front().second.contains(u"16384"), qPrintable(client.failures.front().second));
    QVERIFY(!client->isOpen());
}

void TestLineConnection::aFloodLeavesTheLoopAlive()
{
    ScriptedServer server({sayForEver(QByteArray("220-more\r\n").repeated(1000))});
    Client client;
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.lines.size() > 300'000, longestWait);
    client->abort();
    QTRY_VERIFY_WITH_TIMEOUT(!server.hasClient(), longestWait);
}

void TestLineConnection::blocksAndLinesInTurn()
{
    const QByteArray body = QByteArray("0123456789").repeated(100'000);
    ScriptedServer server({say("begin\r\n" + body + "\nend\r\nlast\r\n"), hangUp()});
    Client client;
    LineConnection *connection = client.connection.get();
    connect(connection, &LineConnection::lineReceived, this, [&](const QByteArray &line) {
        if (line == "begin")
            connection->setReading(LineConnection::Reading::Blocks);
    });
    connect(connection, &LineConnection::blockReceived, this, [&](QByteArrayView block) {
        const qsizetype end = block.indexOf('\n');
        if (end < 0)
            return;
        connection->unread(block.size() - end - 1);
        connection->setReading(LineConnection::Reading::Lines);
    });
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, (QByteArrayList{"begin", "end", "last"}));
    QVERIFY(client.blocks.startsWith(body + '\n'));
}

void TestLineConnection::pausingHoldsTheServer()
{
    ScriptedServer server({say("one\r\n"), hear("go"), say("two\r\n")});
    Client client;
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 1, longestWait);
    client->setPaused(true);
    QVERIFY(client->sendLine("go"));
    QTRY_VERIFY_WITH_TIMEOUT(server.isScriptDone(), longestWait);
    QCoreApplication::processEvents();
    QCOMPARE(client.lines.size(), 1);
    client->setPaused(false);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 2, longestWait);
}

void TestLineConnection::commandsCannotBeSmuggled_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("CR LF") << QByteArray("NOOP\r\nDELE 1");
    QTest::newRow("CR") << QByteArray("NOOP\rDELE 1");
    QTest::newRow("LF") << QByteArray("NOOP\nDELE 1");
    QTest::newRow("NUL") << QByteArray("NOOP\0DELE 1", 11);
}

void TestLineConnection::commandsCannotBeSmuggled()
{
    QFETCH(QByteArray, line);
    ScriptedServer server({hear("fine")});
    Client client;
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    QVERIFY(!client->sendLine(line));
    QVERIFY(client->sendLine("fine"));
    QTRY_VERIFY_WITH_TIMEOUT(server.isScriptDone(), longestWait);
    QCOMPARE(server.heard(), QByteArrayList{"fine"});
}

void TestLineConnection::writingIsBounded_data()
{
    QTest::addColumn<bool>("tls");
    QTest::newRow("plain") << false;
    QTest::newRow("encrypted") << true;
}

void TestLineConnection::writingIsBounded()
{
    QFETCH(bool, tls);
    const QByteArray block(64 * 1024, 'x');
    constexpr int blocks = 400;
    ScriptedServer server(tls ? ScriptedServer::Script{encrypt(), hear("x"), say("thanks\r\n")}
                              : ScriptedServer::Script{hear("x"), say("thanks\r\n")});
    server.setIdentity(m_certificates->good());
    Client client;
    qint64 most = 0;
    int written = 0;
    const auto fill = [&] {
        while (written < blocks && client->write(block))
            ++written;
        most = qMax(most, client->unsent());
    };
    connect(client.connection.get(), &LineConnection::connected, this, fill);
    connect(client.connection.get(), &LineConnection::drained, this, fill);
    client.open(server, tls);
    QTRY_COMPARE_WITH_TIMEOUT(written, blocks, longestWait);
    QTRY_VERIFY_WITH_TIMEOUT(client->write("\r\n"), longestWait);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines, QByteArrayList{"thanks"}, longestWait);
    QVERIFY2(most <= client->limits().unsent + 2 * block.size(), qPrintable(QString::number(most)));
    QCOMPARE(server.heard().front().size(), blocks * block.size());
}

void TestLineConnection::whatFitsIsWritten_data()
{
    writingIsBounded_data();
}

void TestLineConnection::whatFitsIsWritten()
{
    QFETCH(bool, tls);
    QByteArray sent;
    for (int number = 0; sent.size() < 24 * 1024 * 1024; ++number)
        sent += QByteArray::number(number) + ',';
    sent += "\r\n";
    ScriptedServer server(tls ? ScriptedServer::Script{encrypt(), hear("0"), say("thanks\r\n")}
                              : ScriptedServer::Script{hear("0"), say("thanks\r\n")});
    server.setIdentity(m_certificates->good());
    server.pauseAccepting();
    Client client;
    qint64 most = 0;
    qsizetype written = 0;
    int times = 0;
    const auto fill = [&] {
        while (const qsizetype fits = client->writeSome(sent, written))
            written += fits;
        ++times;
        most = qMax(most, client->unsent());
    };
    connect(client.connection.get(), &LineConnection::connected, this, [&] {
        fill();
        server.resumeAccepting();
    });
    connect(client.connection.get(), &LineConnection::sent, this, fill);
    client.open(server, tls);
    if (tls)
        server.resumeAccepting();
    QTRY_COMPARE_WITH_TIMEOUT(client.lines, QByteArrayList{"thanks"}, longestWait);
    QCOMPARE(written, sent.size());
    QVERIFY(server.heard().front() == sent.chopped(2));
    // A plain connection keeps nothing of its own back, and what an encrypted one is given is taken as a whole.
    QVERIFY2(most <= (tls ? 2 * sent.size() : 0), qPrintable(QString::number(most)));
    QVERIFY(tls || times > 1);
}

// Where the peer reads nothing, hardly more counts as sent than what it has room for.
void TestLineConnection::littleWaitsInTheSystem()
{
    const DeafServer deaf;
    QVERIFY(deaf.isListening());
    Client client;
    client.open(deaf);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    constexpr qsizetype most = 1024 * 1024;
    const QByteArray block(64 * 1024, 'z');
    qsizetype taken = 0;
    while (const qsizetype fits = taken < most ? client->writeSome(block) : 0)
        taken += fits;
    QVERIFY2(taken > 0 && taken < most, qPrintable(QString::number(taken)));
}

void TestLineConnection::abortingWhileThereIsNoRoom()
{
    DeafServer deaf;
    QVERIFY(deaf.isListening());
    Client client;
    client.open(deaf);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    const QByteArray block(1024 * 1024, 'z');
    while (client->writeSome(block) == block.size())
        QCoreApplication::processEvents();
    client->abort();
    deaf.resumeAccepting();
    QTRY_VERIFY_WITH_TIMEOUT(deaf.hasPendingConnections(), longestWait);
    const std::unique_ptr<QTcpSocket> peer(deaf.nextPendingConnection());
    QTRY_COMPARE_WITH_TIMEOUT(peer->state(), QAbstractSocket::UnconnectedState, longestWait);
    QVERIFY(!client.hasEnded());
}

// --- TLS --------------------------------------------------------------------------------------------------------

void TestLineConnection::implicitTls()
{
    ScriptedServer server({encrypt(), say("hello\r\n"), hear("there"), hangUp()});
    server.setIdentity(m_certificates->good());
    Client client;
    client.open(server, true);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines, QByteArrayList{"hello"}, longestWait);
    QCOMPARE(client.connected, 1);
    QCOMPARE(client.encrypted, 0);
    QVERIFY(client->isEncrypted());
    QVERIFY(client->tlsVersion().startsWith(u"TLS 1."));
    QVERIFY(client->sendLine("there"));
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
}

void TestLineConnection::startTls()
{
    ScriptedServer server({say("plain\r\n"), hear("STARTTLS"), say("go\r\n"), encrypt(), hear("secret"),
                           say("safe\r\n"), hangUp()});
    server.setIdentity(m_certificates->good());
    Client client;
    LineConnection *connection = client.connection.get();
    connect(connection, &LineConnection::lineReceived, this, [&](const QByteArray &line) {
        if (line == "plain")
            QVERIFY(connection->sendLine("STARTTLS"));
        else if (line == "go")
            connection->startTls();
    });
    connect(connection, &LineConnection::encrypted, this, [&] { QVERIFY(connection->sendLine("secret")); });
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, (QByteArrayList{"plain", "go", "safe"}));
    QCOMPARE(client.connected, 1);
    QCOMPARE(client.encrypted, 1);
    QCOMPARE(client.closed, 1);
}

void TestLineConnection::textBehindTheAgreementIsRefused()
{
    ScriptedServer server({say("go\r\n+OK injected\r\n"), encrypt()});
    server.setIdentity(m_certificates->good());
    Client client;
    LineConnection *connection = client.connection.get();
    connect(connection, &LineConnection::lineReceived, this, [connection] { connection->startTls(); });
    client.open(server);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, QByteArrayList{"go"});
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Tls);
    QVERIFY(client.failures.front().second.contains(u"interfere"));
}

void TestLineConnection::certificates_data()
{
    QTest::addColumn<QString>("which");
    QTest::addColumn<QString>("said");
    QTest::newRow("of another name") << u"other"_qs << u"made out to another.example.org"_qs;
    QTest::newRow("expired") << u"expired"_qs << u"it expired on "_qs;
    QTest::newRow("signed by itself") << u"self"_qs << u"signed by nobody but itself"_qs;
    QTest::newRow("of an unknown authority") << u"unknown"_qs << u"Test authority stranger"_qs;
}

void TestLineConnection::certificates()
{
    QFETCH(QString, which);
    QFETCH(QString, said);
    ScriptedServer server({encrypt(), say("hello\r\n")});
    server.setIdentity(which == u"other"         ? m_certificates->otherName()
                           : which == u"expired" ? m_certificates->expired()
                           : which == u"self"    ? m_certificates->selfSigned()
                                                 : m_certificates->unknownAuthority());
    Client client;
    client->open(u"localhost"_qs, server.serverPort(), true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Tls);
    const QString text = client.failures.front().second;
    QVERIFY2(text.contains(said) && text.contains(u"\"localhost\""), qPrintable(text));
    QVERIFY(client.lines.isEmpty());
    QCOMPARE(client.connected, 0);
    QCOMPARE(server.connections(), 1);
}

void TestLineConnection::aPlainServerIsNotTls()
{
    ScriptedServer server({say("+OK this is a plain server\r\n")});
    Client client;
    client.open(server, true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Tls);
    QVERIFY2(client.failures.front().second.contains(u"could not be encrypted"),
             qPrintable(client.failures.front().second));
}

void TestLineConnection::aServerThatHangsUpInTheHandshake()
{
    ScriptedServer server({hangUp()});
    Client client;
    client.open(server, true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Tls);
}

void TestLineConnection::theEndOfTls_data()
{
    QTest::addColumn<bool>("announced");
    QTest::newRow("announced") << true;
    QTest::newRow("cut off") << false;
}

void TestLineConnection::theEndOfTls()
{
    QFETCH(bool, announced);
    ScriptedServer server({encrypt(), say("hello\r\n"), announced ? hangUp() : cutOff()});
    server.setIdentity(m_certificates->good());
    Client client;
    client.open(server, true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines, QByteArrayList{"hello"});
    QCOMPARE(client.closed, 1);
    QCOMPARE(client->peerAnnouncedEnd(), announced);
}

void TestLineConnection::aSilentHandshakeEnds()
{
    ScriptedServer server({});
    Client client;
    client->setLimits(shortLimits());
    client.open(server, true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::TimedOut);
}

// --- Connecting and ending --------------------------------------------------------------------------------------

void TestLineConnection::nobodyListens()
{
    const quint16 port = portWithoutServer();
    Client client;
    client->open(u"127.0.0.1"_qs, port, false);
    QVERIFY(!client.hasEnded());
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Refused);
    QVERIFY(client.failures.front().second.contains(u"127.0.0.1"));
    QVERIFY(client.failures.front().second.contains(QString::number(port)));
}

void TestLineConnection::anUnknownNameFails()
{
    Client client;
    client->open(u"no-such-host.invalid"_qs, 110, false);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), 2 * longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::Lookup);
    QVERIFY(client.failures.front().second.contains(u"no-such-host.invalid"));
}

// "localhost" has an address of each family here or only one: whichever the server listens on is found.
void TestLineConnection::bothFamiliesAreTried()
{
    ScriptedServer server({say("hello\r\n")});
    Client client;
    client->open(u"localhost"_qs, server.serverPort(), false);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines, QByteArrayList{"hello"}, longestWait);
    QVERIFY(client.failures.empty());
    QCOMPARE(client->peerAddress(), QHostAddress(QHostAddress::LocalHost));
    QCOMPARE(server.connections(), 1);
}

void TestLineConnection::ipv6()
{
    ScriptedServer server({say("hello\r\n")}, QHostAddress::LocalHostIPv6);
    if (!server.isListening())
        QSKIP("this machine has no IPv6");
    Client client;
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines, QByteArrayList{"hello"}, longestWait);
}

void TestLineConnection::silenceEndsWhatIsAwaited()
{
    ScriptedServer server({say("hello\r\n"), hear("never")});
    Client client;
    client->setLimits(shortLimits());
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 1, longestWait);
    client->await(u"the answer to everything"_qs);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::TimedOut);
    QVERIFY(client.failures.front().second.contains(u"the answer to everything"));
    QTRY_VERIFY_WITH_TIMEOUT(!server.hasClient(), longestWait);
}

void TestLineConnection::octetsAreNoProgressOfALine()
{
    ScriptedServer server({say("hello\r\n"), sayInOctets(QByteArray(15'000, 'x'))});
    Client client;
    client->setLimits(shortLimits());
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 1, longestWait);
    client->await(u"a line"_qs, 20);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.failures.size(), 1U);
    QCOMPARE(client.failures.front().first, Failure::TimedOut);
}

void TestLineConnection::silenceIsNoFailureWhileNothingIsAwaited()
{
    ScriptedServer server({say("hello\r\n"), hear("go"), say("there\r\n")});
    Client client;
    client->setLimits(shortLimits());
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 1, longestWait);
    client->await(u"nothing"_qs);
    client->stopAwaiting();
    QTimer longer;
    longer.setSingleShot(true);
    QSignalSpy over(&longer, &QTimer::timeout);
    longer.start(2 * client->limits().idle);
    QVERIFY(over.wait(longestWait));
    QVERIFY(!client.hasEnded());
    QVERIFY(client->sendLine("go"));
    QTRY_COMPARE_WITH_TIMEOUT(client.lines.size(), 2, longestWait);
}

void TestLineConnection::everythingIsDeliveredBeforeTheEnd()
{
    const int count = 200'000;
    QByteArray all;
    for (int i = 0; i < count; ++i)
        all += QByteArray::number(i) + "\r\n";
    ScriptedServer server({encrypt(), say(all), hangUp()});
    server.setIdentity(m_certificates->good());
    Client client;
    client.open(server, true);
    QTRY_VERIFY_WITH_TIMEOUT(client.hasEnded(), longestWait);
    QCOMPARE(client.lines.size(), count);
    QCOMPARE(client.lines.back(), QByteArray::number(count - 1));
    QCOMPARE(client.closed, 1);
}

void TestLineConnection::closingSendsWhatWaits()
{
    const QByteArray line(300'000, 'y');
    ScriptedServer server({hear("y"), hear("last")});
    Client client;
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    QVERIFY(client->sendLine(line));
    QVERIFY(client->sendLine("last"));
    client->close();
    QCOMPARE(client.closed, 0);
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
    QTRY_VERIFY_WITH_TIMEOUT(server.isScriptDone(), longestWait);
    QCOMPARE(server.heard().front().size(), line.size());
    QVERIFY(client.failures.empty());
}

void TestLineConnection::closingEndsWithoutTheServer()
{
    const DeafServer deaf;
    QVERIFY(deaf.isListening());
    Client client;
    client->setLimits(shortLimits());
    client.open(deaf);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    while (client->write(QByteArray(256 * 1024, 'z')))
        QCoreApplication::processEvents();
    client->close();
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
}

void TestLineConnection::finishingWaitsForTheServer_data()
{
    QTest::addColumn<bool>("tls");
    QTest::newRow("plain") << false;
    QTest::newRow("encrypted") << true;
}

void TestLineConnection::finishingWaitsForTheServer()
{
    QFETCH(bool, tls);
    const QByteArray line(300'000, 'y');
    ScriptedServer::Script script{hear("y"), hear("last")};
    if (tls)
        script.insert(script.begin(), encrypt());
    ScriptedServer server(script);
    server.setIdentity(m_certificates->good());
    Client client;
    client->open(u"localhost"_qs, server.serverPort(), tls);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    QVERIFY(client->sendLine(line));
    QVERIFY(client->sendLine("last"));
    client->finishSending();
    QVERIFY(!client->sendLine("too late"));
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
    QVERIFY(server.isScriptDone());
    QCOMPARE(server.heard().size(), 2);
    QCOMPARE(server.heard().front().size(), line.size());
    QVERIFY(client.failures.empty());
    QVERIFY(client.lines.empty());
}

void TestLineConnection::finishingEndsWithoutTheServer()
{
    ScriptedServer server({hear("y"), hear("what never comes")});
    Client client;
    client->setLimits(shortLimits());
    client.open(server);
    QTRY_COMPARE_WITH_TIMEOUT(client.connected, 1, longestWait);
    QVERIFY(client->sendLine("y"));
    client->finishSending();
    QTRY_COMPARE_WITH_TIMEOUT(client.closed, 1, longestWait);
    QVERIFY(client.failures.empty());
}

void TestLineConnection::abortingIsSilent_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<int>("turns");
    for (const bool tls : {false, true}) {
        for (const int turns : {0, 1, 2, 5, 20, 100})
            QTest::addRow("%s, %d turns", tls ? "encrypted" : "plain", turns) << tls << turns;
    }
}

// Whatever phase the connection is in after so many turns of the event loop.
void TestLineConnection::abortingIsSilent()
{
    QFETCH(bool, tls);
    QFETCH(int, turns);
    const QByteArray flood = QByteArray("hello\r\n").repeated(10'000);
    ScriptedServer server(tls ? ScriptedServer::Script{encrypt(), sayForEver(flood)}
                              : ScriptedServer::Script{sayForEver(flood)});
    server.setIdentity(m_certificates->good());
    Client client;
    client->open(u"localhost"_qs, server.serverPort(), tls);
    for (int i = 0; i < turns; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    client->abort();
    const auto lines = client.lines.size();
    QVERIFY(!client->isOpen());
    QTRY_VERIFY_WITH_TIMEOUT(!server.hasClient(), longestWait);
    QCoreApplication::processEvents();
    QCOMPARE(client.lines.size(), lines);
    QVERIFY(!client.hasEnded());
}

void TestLineConnection::destroyedInEverySignal_data()
{
    QTest::addColumn<QByteArray>("signal");
    for (const char *name : {"progress(QString)", "connected()", "encrypted()", "lineReceived(QByteArray)",
                             "blockReceived(QByteArrayView)", "sent(qint64)", "closed()",
                             "failed(vandrel::LineConnection::Failure,QString)"})
        QTest::newRow(name) << QByteArray(name);
}

void TestLineConnection::destroyedInEverySignal()
{
    QFETCH(QByteArray, signal);
    const bool fails = signal.startsWith("failed");
    ScriptedServer server({say("one\r\ntwo\r\n"), hear("STARTTLS"), say("go\r\n"), encrypt(),
                           say("more\r\nblock"), fails ? say(QByteArray(40'000, 'x')) : hangUp()});
    server.setIdentity(m_certificates->good());
    auto *connection = new LineConnection;
    connect(connection, &LineConnection::lineReceived, this, [connection](const QByteArray &line) {
        if (line == "two")
            QVERIFY(connection->sendLine("STARTTLS"));
        else if (line == "go")
            connection->startTls();
    });
    connect(connection, &LineConnection::lineReceived, this, [&](const QByteArray &line) {
        if (line == "more" && signal.startsWith("block"))
            connection->setReading(LineConnection::Reading::Blocks);
    });
    Destroyer destroyer{connection};
    QVERIFY(connect(connection, QByteArray('2' + signal).constData(), &destroyer, SLOT(destroy())));
    const QPointer<LineConnection> alive(connection);
    connection->open(u"localhost"_qs, server.serverPort(), false);
    QTRY_VERIFY_WITH_TIMEOUT(alive.isNull(), longestWait);
    QTRY_VERIFY_WITH_TIMEOUT(!server.hasClient(), longestWait);
}

void TestLineConnection::canBeOpenedAgain()
{
    ScriptedServer server({say("hello\r\n"), hangUp()});
    Client client;
    for (int i = 1; i <= 3; ++i) {
        client.open(server);
        QTRY_COMPARE_WITH_TIMEOUT(client.closed, i, longestWait);
        QCOMPARE(client.lines.size(), i);
    }
    QCOMPARE(server.connections(), 3);
}

QTEST_GUILESS_MAIN(TestLineConnection)
#include "TestLineConnection.moc"

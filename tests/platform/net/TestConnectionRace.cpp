#include <memory>
#include <vector>

#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include "platform/net/ConnectionRace.h"
#include "tests/platform/net/ScriptedServer.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

constexpr int longestWait = 60'000;
// Longer than any test: the next address is tried only because the one before has failed.
constexpr int endlessPatience = 3'600'000;

/// A race and what it reports.
class Race
{
public:
    Race()
    {
        QObject::connect(&m_race, &ConnectionRace::trying,
                         [this](const QString &where) { tried.append(where.section(u' ', 0, 0)); });
        QObject::connect(&m_race, &ConnectionRace::won, [this](QSslSocket *socket) { winner.reset(socket); });
        QObject::connect(&m_race, &ConnectionRace::lost, [this](bool unknown, const QString &text) {
            isUnknown = unknown;
            lostText = text;
        });
    }

    void start(const QList<QHostAddress> &addresses, quint16 port, int patience)
    {
        m_race.startWith(u"mail.example.org"_s, addresses, port, patience);
    }
    bool hasEnded() const { return winner || !lostText.isEmpty(); }

    QStringList tried;
    std::unique_ptr<QSslSocket> winner;
    QString lostText;
    bool isUnknown = false;

private:
    ConnectionRace m_race;
};

} // namespace

/// A server of several addresses, of which not all answer.
class TestConnectionRace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theOneThatRefusesIsPassedOver_data();
    void theOneThatRefusesIsPassedOver();
    void theOneThatNeverAnswersIsNotWaitedFor();
    void allRefuse();
    void noAddress();
    void theFamiliesTakeTurns();
};

void TestConnectionRace::theOneThatRefusesIsPassedOver_data()
{
    QTest::addColumn<QHostAddress>("refusing");
    QTest::addColumn<QHostAddress>("listening");
    const QHostAddress first(QHostAddress::LocalHost);
    const QHostAddress second(u"127.0.0.2"_s);
    const QHostAddress six(QHostAddress::LocalHostIPv6);
    QTest::newRow("two of IPv4") << second << first;
    QTest::newRow("IPv6, then IPv4") << six << first;
    QTest::newRow("IPv4, then IPv6") << first << six;
}

void TestConnectionRace::theOneThatRefusesIsPassedOver()
{
    QFETCH(QHostAddress, refusing);
    QFETCH(QHostAddress, listening);
    QTcpServer server;
    if (!server.listen(listening))
        QSKIP("this machine has no such address");
    Race race;
    race.start({refusing, listening}, server.serverPort(), endlessPatience);
    QTRY_VERIFY_WITH_TIMEOUT(race.hasEnded(), longestWait);
    QVERIFY2(race.winner, qPrintable(race.lostText));
    QCOMPARE(race.winner->peerAddress(), listening);
    QCOMPARE(race.tried, QStringList({refusing.toString(), listening.toString()}));
}

// A listener that accepts nobody lets the system answer a few and leaves the others without an answer.
void TestConnectionRace::theOneThatNeverAnswersIsNotWaitedFor()
{
    QTcpServer deaf;
    deaf.setListenBacklogSize(1);
    if (!deaf.listen(QHostAddress(u"127.0.0.2"_s)))
        QSKIP("this machine has no second address");
    deaf.pauseAccepting();
    std::vector<std::unique_ptr<QTcpSocket>> waiting;
    for (int i = 0; i < 16; ++i) {
        waiting.push_back(std::make_unique<QTcpSocket>());
        waiting.back()->connectToHost(deaf.serverAddress(), deaf.serverPort());
    }
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, deaf.serverPort()));
    Race race;
    race.start({deaf.serverAddress(), server.serverAddress()}, server.serverPort(), 50);
    QTRY_VERIFY_WITH_TIMEOUT(race.hasEnded(), longestWait);
    QVERIFY2(race.winner, qPrintable(race.lostText));
    QCOMPARE(race.winner->peerAddress(), server.serverAddress());
    QCOMPARE(race.tried, QStringList({u"127.0.0.2"_s, u"127.0.0.1"_s}));
}

void TestConnectionRace::allRefuse()
{
    const quint16 port = portWithoutServer();
    Race race;
    race.start({QHostAddress(u"127.0.0.2"_s), QHostAddress(QHostAddress::LocalHost)}, port, endlessPatience);
    QTRY_VERIFY_WITH_TIMEOUT(race.hasEnded(), longestWait);
    QVERIFY(!race.winner);
    QVERIFY(!race.isUnknown);
    for (const QString &named :
         {u"mail.example.org"_s, QString::number(port), u"127.0.0.1"_s, u"127.0.0.2"_s})
        QVERIFY2(race.lostText.contains(named), qPrintable(race.lostText));
}

void TestConnectionRace::noAddress()
{
    Race race;
    race.start({}, 110, endlessPatience);
    QTRY_VERIFY_WITH_TIMEOUT(race.hasEnded(), longestWait);
    QVERIFY(race.isUnknown);
    QVERIFY(race.lostText.contains(u"mail.example.org"));
}

// A broken family costs one wait, not one for each of its addresses.
void TestConnectionRace::theFamiliesTakeTurns()
{
    const quint16 port = portWithoutServer();
    Race race;
    race.start({QHostAddress(u"::1"_s), QHostAddress(u"::1"_s), QHostAddress(u"127.0.0.1"_s),
                QHostAddress(u"127.0.0.2"_s)},
               port, endlessPatience);
    QTRY_VERIFY_WITH_TIMEOUT(race.hasEnded(), longestWait);
    QCOMPARE(race.tried, QStringList({u"::1"_s, u"127.0.0.1"_s, u"::1"_s, u"127.0.0.2"_s}));
}

QTEST_GUILESS_MAIN(TestConnectionRace)
#include "TestConnectionRace.moc"

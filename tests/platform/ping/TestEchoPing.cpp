#include <memory>
#include <utility>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QSemaphore>
#include <QTest>
#include <QTimer>

#include "platform/ping/EchoPing.h"
#include "runtime/EventGate.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

using End = EchoOutcome::End;

// A way that sends nothing: it keeps what it was asked and gives the outcomes in their order, the last one for ever.
class ScriptedWay final : public EchoWay
{
public:
    explicit ScriptedWay(QList<EchoOutcome> outcomes) : m_outcomes(std::move(outcomes)) { }

    EchoOutcome ask(const EchoQuestion &question, EchoPause &pause) override
    {
        asked.append(question);
        if (waits) {
            while (pause.passTurn()) { }
            return EchoOutcome::failed(End::Cancelled);
        }
        return m_outcomes.size() > 1 ? m_outcomes.takeFirst() : m_outcomes.first();
    }

    QList<EchoQuestion> asked;
    /// Nothing comes until the wait is cancelled.
    bool waits = false;

private:
    QList<EchoOutcome> m_outcomes;
};

EchoOutcome reply(const QByteArray &data, qint64 nanoseconds = 0)
{
    EchoOutcome outcome;
    outcome.end = End::Replied;
    outcome.data = data;
    outcome.dataSize = data.size();
    outcome.nanoseconds = nanoseconds;
    return outcome;
}

// The control on one scripted way.
class Rig
{
public:
    explicit Rig(QList<EchoOutcome> outcomes = {reply("abc")})
        : way(std::make_shared<ScriptedWay>(std::move(outcomes)))
    {
        means.ways = {way};
        means.resolver = [](const QString &) { return NameAnswer(); };
    }

    EchoPing &control()
    {
        if (!m_control)
            m_control = std::make_unique<EchoPing>(means);
        return *m_control;
    }

    QString ping(const QString &host)
    {
        control().setHost(host);
        control().setPing(true);
        return control().StatusText();
    }

    std::shared_ptr<ScriptedWay> way;
    EchoPing::Means means;

private:
    std::unique_ptr<EchoPing> m_control;
};

NameAnswer namesAddresses(const QStringList &texts)
{
    NameAnswer answer;
    for (const QString &text : texts)
        answer.addresses.append(QHostAddress(text));
    return answer;
}

} // namespace

/// The ping control on scripted ways.
class TestEchoPing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beforeTheFirstPing();
    void whatIsAsked();
    void aReplysResults();
    void timesAreRounded_data();
    void timesAreRounded();
    void aFailureKeepsTheLastReply();
    void aReplyWhoseDataIsUnknown();
    void waysAreTriedInOrder();
    void withoutAnyWayTheTextSaysWhatToDo();
    void aTimeOutThatLeavesNoTime_data();
    void aTimeOutThatLeavesNoTime();
    void dataBeyondTheProtocolsLimit();
    void noHost();
    void namesAreLookedUp();
    void anUnknownName();
    void aNameWithoutAddress();
    void aNameServerThatDoesNotAnswer();
    void manyUnansweredLookups();
    void theNextAddressOfANameWhereOneHasNoRoute();
    void cancellingEndsAWait();
    void cancellingEndsALookup();
    void cancellingWithoutAWaitChangesNothing();
    void pingWhileOneWaits();
    void destroyedWhileItWaits();
    void destroyedDuringALookup();
    void eventsOfOtherControlsWait();
    void localhost();
};

void TestEchoPing::beforeTheFirstPing()
{
    const EchoPing control;
    QCOMPARE(control.StatusText(), QString());
    QCOMPARE(control.EchoData(), QString());
    QCOMPARE(control.DataSize(), 0);
    QCOMPARE(control.RoundTripTime(), 0);
    QVERIFY(!control.ErrorFlag());
}

void TestEchoPing::whatIsAsked()
{
    Rig rig;
    rig.control().setDataToSend(u" 5 ä"_s);
    rig.ping(u"192.0.2. 5"_s);
    rig.control().setTimeOut(250);
    rig.control().setDataToSend(QString());
    rig.ping(u"::1"_s);
    QCOMPARE(rig.way->asked.size(), 2);
    QCOMPARE(rig.way->asked[0].to, QHostAddress(u"192.0.2.5"_s));
    QCOMPARE(rig.way->asked[0].data, u" 5 ä"_s.toUtf8());
    QCOMPARE(rig.way->asked[0].timeOut, 1000);
    QCOMPARE(rig.way->asked[1].to, QHostAddress(u"::1"_s));
    QCOMPARE(rig.way->asked[1].data, QByteArray());
    QCOMPARE(rig.way->asked[1].timeOut, 250);
}

void TestEchoPing::aReplysResults()
{
    Rig rig({reply(u" 5 ä"_s.toUtf8(), 12'300'000)});
    QCOMPARE(rig.ping(u"192.0.2.5"_s), u"Reply from 192.0.2.5: 5 bytes in 12 ms."_s);
    QCOMPARE(rig.control().EchoData(), u" 5 ä"_s);
    QCOMPARE(rig.control().DataSize(), 5);
    QCOMPARE(rig.control().RoundTripTime(), 12);
    QVERIFY(!rig.control().ErrorFlag());
}

void TestEchoPing::timesAreRounded_data()
{
    QTest::addColumn<qint64>("nanoseconds");
    QTest::addColumn<qint32>("milliseconds");
    QTest::newRow("nothing") << qint64{0} << 0;
    QTest::newRow("less than half") << qint64{499'999} << 0;
    QTest::newRow("half") << qint64{500'000} << 1;
    QTest::newRow("the longest") << qint64{32'767'000'000} << 32767;
}

void TestEchoPing::timesAreRounded()
{
    QFETCH(qint64, nanoseconds);
    QFETCH(qint32, milliseconds);
    Rig rig({reply("", nanoseconds)});
    rig.ping(u"192.0.2.5"_s);
    QCOMPARE(rig.control().RoundTripTime(), milliseconds);
}

void TestEchoPing::aFailureKeepsTheLastReply()
{
    Rig rig({reply("abc", 7'000'000), EchoOutcome::failed(End::Silent)});
    rig.ping(u"192.0.2.5"_s);
    QCOMPARE(rig.ping(u"192.0.2.6"_s), u"No reply from 192.0.2.6 within 1000 ms."_s);
    QVERIFY(rig.control().ErrorFlag());
    QCOMPARE(rig.control().EchoData(), u"abc"_s);
    QCOMPARE(rig.control().DataSize(), 3);
    QCOMPARE(rig.control().RoundTripTime(), 7);
}

void TestEchoPing::aReplyWhoseDataIsUnknown()
{
    EchoOutcome outcome = reply("");
    outcome.data.reset();
    outcome.dataSize = 1000;
    Rig rig({reply("abc"), outcome});
    rig.ping(u"192.0.2.5"_s);
    rig.ping(u"192.0.2.5"_s);
    QCOMPARE(rig.control().EchoData(), QString());
    QCOMPARE(rig.control().DataSize(), 1000);
    QVERIFY(rig.control().StatusText().contains(u"15 bytes"_s));
}

void TestEchoPing::waysAreTriedInOrder()
{
    const auto first = std::make_shared<ScriptedWay>(QList{EchoOutcome::failed(End::NotPermitted)});
    const auto second = std::make_shared<ScriptedWay>(QList{EchoOutcome::failed(End::Silent)});
    const auto third = std::make_shared<ScriptedWay>(QList{reply("abc")});
    Rig rig;
    rig.means.ways = {first, second, third};
    rig.ping(u"192.0.2.5"_s);
    QVERIFY(rig.control().ErrorFlag());
    QCOMPARE(first->asked.size(), 1);
    QCOMPARE(second->asked.size(), 1);
    QCOMPARE(third->asked.size(), 0);
}

void TestEchoPing::withoutAnyWayTheTextSaysWhatToDo()
{
    Rig rig({EchoOutcome::failed(End::NotPermitted)});
    const QString status = rig.ping(u"192.0.2.5"_s);
    QVERIFY(rig.control().ErrorFlag());
    QVERIFY2(status.contains(u"iputils-ping"_s)
                 && status.contains(u"net.ipv4.ping_group_range=\"0 2147483647\""_s),
             qPrintable(status));
    QVERIFY(!status.contains(u'\n'));
}

void TestEchoPing::aTimeOutThatLeavesNoTime_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("none") << 0;
    QTest::newRow("less") << -32768;
}

void TestEchoPing::aTimeOutThatLeavesNoTime()
{
    QFETCH(int, milliseconds);
    Rig rig;
    rig.control().setTimeOut(static_cast<qint16>(milliseconds));
    QVERIFY(rig.ping(u"192.0.2.5"_s).contains(QString::number(milliseconds)));
    QVERIFY(rig.control().ErrorFlag());
    QVERIFY(rig.way->asked.isEmpty());
}

void TestEchoPing::dataBeyondTheProtocolsLimit()
{
    Rig rig;
    rig.control().setDataToSend(u"x"_s.repeated(65508));
    const QString status = rig.ping(u"192.0.2.5"_s);
    QVERIFY2(status.contains(u"65508"_s) && status.contains(u"65507"_s), qPrintable(status));
    QVERIFY(rig.control().ErrorFlag());
    QVERIFY(rig.way->asked.isEmpty());
    rig.ping(u"::1"_s);
    QCOMPARE(rig.way->asked.size(), 1);
    // Octets count, not letters.
    rig.control().setDataToSend(u"ä"_s.repeated(32754));
    rig.ping(u"192.0.2.5"_s);
    QVERIFY(rig.control().ErrorFlag());
}

void TestEchoPing::noHost()
{
    Rig rig;
    QCOMPARE(rig.ping(u" "_s), u"No host was named."_s);
    QVERIFY(rig.control().ErrorFlag());
    QVERIFY(rig.way->asked.isEmpty());
}

void TestEchoPing::namesAreLookedUp()
{
    Rig rig;
    rig.means.resolver = [](const QString &name) {
        return name == u"xn--bcher-kva.example" ? namesAddresses({u"192.0.2.9"_s}) : NameAnswer();
    };
    QCOMPARE(rig.ping(u"Bücher.example"_s), u"Reply from Bücher.example (192.0.2.9): 3 bytes in 0.00 ms."_s);
    QCOMPARE(rig.way->asked.first().to, QHostAddress(u"192.0.2.9"_s));
}

void TestEchoPing::anUnknownName()
{
    Rig rig;
    rig.means.resolver = [](const QString &) { return NameAnswer{{}, u"Name or service not known"_s}; };
    QCOMPARE(rig.ping(u"nobody.example"_s),
             u"The name nobody.example was not found: Name or service not known."_s);
    QVERIFY(rig.control().ErrorFlag());
    QVERIFY(rig.way->asked.isEmpty());
}

void TestEchoPing::aNameWithoutAddress()
{
    Rig rig;
    QCOMPARE(rig.ping(u"mail.example"_s), u"The name mail.example has no address."_s);
    QVERIFY(rig.control().ErrorFlag());
}

void TestEchoPing::aNameServerThatDoesNotAnswer()
{
    const auto release = std::make_shared<QSemaphore>();
    Rig rig;
    rig.means.lookupPatience = 50;
    rig.means.resolver = [release](const QString &) {
        release->acquire();
        return NameAnswer();
    };
    QCOMPARE(rig.ping(u"nobody.example"_s),
             u"The name nobody.example was not found: the name server does not answer."_s);
    QVERIFY(rig.control().ErrorFlag());
    release->release();
}

void TestEchoPing::manyUnansweredLookups()
{
    const auto release = std::make_shared<QSemaphore>();
    Rig rig;
    rig.means.lookupPatience = 1;
    rig.means.resolver = [release](const QString &) {
        release->acquire();
        return NameAnswer();
    };
    QString status;
    for (int count = 0; count < 40 && !status.contains(u"earlier"_s); ++count)
        status = rig.ping(u"nobody.example"_s);
    release->release(40);
    QCOMPARE(status, u"The name nobody.example was not found: earlier questions are still unanswered."_s);
    // Once they are answered there is room again.
    QTRY_VERIFY(!rig.ping(u"nobody.example"_s).contains(u"earlier"_s));
    release->release(40);
}

void TestEchoPing::theNextAddressOfANameWhereOneHasNoRoute()
{
    Rig rig({EchoOutcome::failed(End::NoRoute), reply("abc")});
    rig.means.resolver = [](const QString &) { return namesAddresses({u"2001:db8::9"_s, u"192.0.2.9"_s}); };
    rig.ping(u"desk.example"_s);
    QVERIFY(!rig.control().ErrorFlag());
    QCOMPARE(rig.way->asked.size(), 2);
    QCOMPARE(rig.way->asked[1].to, QHostAddress(u"192.0.2.9"_s));
}

void TestEchoPing::cancellingEndsAWait()
{
    Rig rig;
    rig.way->waits = true;
    QTimer::singleShot(0, &rig.control(), [&rig] { rig.control().setPing(false); });
    QCOMPARE(rig.ping(u"192.0.2.5"_s), u"The ping of 192.0.2.5 was stopped."_s);
    QVERIFY(rig.control().ErrorFlag());
    // The next one is a fresh one.
    rig.way->waits = false;
    rig.ping(u"192.0.2.5"_s);
    QVERIFY(!rig.control().ErrorFlag());
}

void TestEchoPing::cancellingEndsALookup()
{
    const auto release = std::make_shared<QSemaphore>();
    Rig rig;
    rig.means.lookupPatience = 60'000;
    rig.means.resolver = [release](const QString &) {
        release->acquire();
        return NameAnswer();
    };
    QTimer::singleShot(0, &rig.control(), [&rig] { rig.control().setPing(false); });
    QCOMPARE(rig.ping(u"nobody.example"_s), u"The ping of nobody.example was stopped."_s);
    QVERIFY(rig.control().ErrorFlag());
    release->release();
}

void TestEchoPing::cancellingWithoutAWaitChangesNothing()
{
    Rig rig({EchoOutcome::failed(End::Silent)});
    const QString status = rig.ping(u"192.0.2.5"_s);
    rig.control().setPing(false);
    QCOMPARE(rig.control().StatusText(), status);
    QVERIFY(rig.control().ErrorFlag());
    rig.ping(u"192.0.2.5"_s);
    QCOMPARE(rig.way->asked.size(), 2);
}

void TestEchoPing::pingWhileOneWaits()
{
    Rig rig;
    rig.way->waits = true;
    int depth = 0;
    QTimer::singleShot(0, &rig.control(), [&] {
        rig.control().setPing(true);
        depth = static_cast<int>(rig.way->asked.size());
        rig.control().setPing(false);
    });
    rig.ping(u"192.0.2.5"_s);
    QCOMPARE(depth, 1);
}

void TestEchoPing::destroyedWhileItWaits()
{
    Rig rig;
    rig.way->waits = true;
    auto control = std::make_unique<EchoPing>(rig.means);
    EchoPing *const doomed = control.get();
    QTimer::singleShot(0, this, [&control] { control.reset(); });
    doomed->setHost(u"192.0.2.5"_s);
    doomed->setPing(true);
    QVERIFY(!control);
}

void TestEchoPing::destroyedDuringALookup()
{
    const auto release = std::make_shared<QSemaphore>();
    Rig rig;
    rig.means.resolver = [release](const QString &) {
        release->acquire();
        return NameAnswer();
    };
    auto control = std::make_unique<EchoPing>(rig.means);
    EchoPing *const doomed = control.get();
    QTimer::singleShot(0, this, [&control] { control.reset(); });
    doomed->setHost(u"nobody.example"_s);
    doomed->setPing(true);
    QVERIFY(!control);
    QVERIFY(rig.way->asked.isEmpty());
    release->release();
}

void TestEchoPing::eventsOfOtherControlsWait()
{
    Rig rig;
    rig.way->waits = true;
    bool isRaised = false;
    bool wasRaisedMeanwhile = true;
    EventGate::raise(this, [&isRaised] { isRaised = true; });
    QTimer::singleShot(50, this, [&] {
        wasRaisedMeanwhile = isRaised;
        rig.control().setPing(false);
    });
    rig.ping(u"192.0.2.5"_s);
    QVERIFY(!wasRaisedMeanwhile);
    QTRY_VERIFY(isRaised);
}

// The system's own resolver knows this name without a name server.
void TestEchoPing::localhost()
{
    Rig rig;
    rig.means.resolver = NameLookup::systemResolver();
    rig.ping(u"localhost"_s);
    QCOMPARE(rig.way->asked.size(), 1);
    QVERIFY(rig.way->asked.first().to.isLoopback());
}

QTEST_GUILESS_MAIN(TestEchoPing)
#include "TestEchoPing.moc"

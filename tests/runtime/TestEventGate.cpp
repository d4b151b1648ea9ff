#include <memory>
#include <optional>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include "runtime/ErrorReport.h"
#include "runtime/EventGate.h"
#include "runtime/Prompts.h"

using namespace vandrel;

namespace {

// Lets all that is due run, and a turn more: what is wrongly delivered would have been by then.
void letEventsRun()
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

} // namespace

class TestEventGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void raisingNeverDeliversAtOnce();
    void eventsArriveInOrder();
    void eventsOfSeveralSendersKeepTheirOrder();
    void anEventOfADestroyedSenderIsDropped();
    void aHandlerMayDestroyTheNextSender();
    void heldEventsWaitAndKeepTheirOrder();
    void holdsNest();
    void anEventRaisedWhileDeliveringComesLast();
    void anEventRaisedWhileDeliveringIsNotDeliveredAtOnce();
    void eventsBehindABoxWaitForItsEnd();
    void eventsRaisedWhileABoxIsOpenWait();
    void aNestedLoopWithoutABoxGoesOnDelivering();
    void nestedLoopsAndBoxesLoseNothing();
    void aFloodLeavesRoomForOtherEvents();
    void aFailingHandlerIsReportedAndTheRestArrives();

private:
    void raise(int number)
    {
        EventGate::raise(this, [this, number] { m_log.append(number); });
    }

    QList<int> m_log;
};

void TestEventGate::cleanup()
{
    letEventsRun();
    QVERIFY(!EventGate::isHeld());
    m_log.clear();
}

void TestEventGate::raisingNeverDeliversAtOnce()
{
    raise(1);
    QCOMPARE(m_log, QList<int>());
    QTRY_COMPARE(m_log, QList<int>{1});
}

void TestEventGate::eventsArriveInOrder()
{
    QList<int> expected;
    for (int i = 0; i < 1000; ++i) {
        raise(i);
        expected.append(i);
    }
    QTRY_COMPARE(m_log, expected);
}

void TestEventGate::eventsOfSeveralSendersKeepTheirOrder()
{
    QObject one;
    QObject other;
    EventGate::raise(&one, [this] { m_log.append(1); });
    EventGate::raise(&other, [this] { m_log.append(2); });
    EventGate::raise(&one, [this] { m_log.append(3); });
    QTRY_COMPARE(m_log, (QList<int>{1, 2, 3}));
}

void TestEventGate::anEventOfADestroyedSenderIsDropped()
{
    auto sender = std::make_unique<QObject>();
    EventGate::raise(sender.get(), [this] { m_log.append(1); });
    raise(2);
    sender.reset();
    QTRY_COMPARE(m_log, QList<int>{2});
}

void TestEventGate::aHandlerMayDestroyTheNextSender()
{
    auto sender = std::make_unique<QObject>();
    EventGate::raise(this, [&] { sender.reset(); });
    EventGate::raise(sender.get(), [this] { m_log.append(1); });
    raise(2);
    QTRY_COMPARE(m_log, QList<int>{2});
}

void TestEventGate::heldEventsWaitAndKeepTheirOrder()
{
    raise(1);
    {
        const EventGate::Hold hold;
        QVERIFY(EventGate::isHeld());
        raise(2);
        letEventsRun();
        QCOMPARE(m_log, QList<int>());
        raise(3);
    }
    QVERIFY(!EventGate::isHeld());
    QCOMPARE(m_log, QList<int>());
    QTRY_COMPARE(m_log, (QList<int>{1, 2, 3}));
}

void TestEventGate::holdsNest()
{
    std::optional<EventGate::Hold> outer(std::in_place);
    std::optional<EventGate::Hold> inner(std::in_place);
    raise(1);
    inner.reset();
    QVERIFY(EventGate::isHeld());
    letEventsRun();
    QCOMPARE(m_log, QList<int>());
    outer.reset();
    QTRY_COMPARE(m_log, QList<int>{1});
}

void TestEventGate::anEventRaisedWhileDeliveringComesLast()
{
    EventGate::raise(this, [this] {
        m_log.append(1);
        raise(3);
    });
    raise(2);
    QTRY_COMPARE(m_log, (QList<int>{1, 2, 3}));
}

void TestEventGate::anEventRaisedWhileDeliveringIsNotDeliveredAtOnce()
{
    EventGate::raise(this, [this] {
        raise(2);
        m_log.append(1);
    });
    QTRY_COMPARE(m_log, (QList<int>{1, 2}));
}

void TestEventGate::eventsBehindABoxWaitForItsEnd()
{
    EventGate::raise(this, [this] {
        const EventGate::Hold box;
        m_log.append(1);
        letEventsRun();
        m_log.append(2);
    });
    raise(3);
    QTRY_COMPARE(m_log, (QList<int>{1, 2, 3}));
}

void TestEventGate::eventsRaisedWhileABoxIsOpenWait()
{
    EventGate::raise(this, [this] {
        const EventGate::Hold box;
        QTimer::singleShot(0, this, [this] {
            m_log.append(1);
            raise(3);
        });
        while (m_log.isEmpty())
            QCoreApplication::processEvents();
        letEventsRun();
        m_log.append(2);
    });
    QTRY_COMPARE(m_log, (QList<int>{1, 2, 3}));
}

void TestEventGate::aNestedLoopWithoutABoxGoesOnDelivering()
{
    QEventLoop loop;
    EventGate::raise(this, [&] {
        m_log.append(1);
        loop.exec();
        m_log.append(4);
    });
    raise(2);
    EventGate::raise(this, [&] {
        m_log.append(3);
        loop.quit();
    });
    raise(5);
    QTRY_COMPARE(m_log.size(), 5);
    // 5 may arrive in the loop that is about to end, or behind it.
    m_log.removeOne(5);
    QCOMPARE(m_log, (QList<int>{1, 2, 3, 4}));
}

// Handlers that run event loops and boxes in many ways see every event once, in the order of raising.
void TestEventGate::nestedLoopsAndBoxesLoseNothing()
{
    constexpr int count = 200;
    QList<int> expected;
    for (int i = 0; i < count; ++i) {
        expected.append(i);
        EventGate::raise(this, [this, i] {
            m_log.append(i);
            if (i % 7 == 0) {
                const EventGate::Hold box;
                letEventsRun();
            } else if (i % 5 == 0) {
                letEventsRun();
            }
            if (i % 11 == 0)
                raise(count + i / 11);
        });
    }
    for (int i = 0; i * 11 < count; ++i)
        expected.append(count + i);
    QTRY_COMPARE(m_log.size(), expected.size());
    std::sort(m_log.begin() + count, m_log.end());
    QCOMPARE(m_log, expected);
}

void TestEventGate::aFloodLeavesRoomForOtherEvents()
{
    // Each event raises the next, so the flood ends only when something else gets a turn.
    bool ended = false;
    bool dry = false;
    std::function<void()> flood = [&] {
        dry = ended;
        if (!ended)
            EventGate::raise(this, flood);
    };
    flood();
    int otherTurns = 0;
    QTimer other;
    connect(&other, &QTimer::timeout, this, [&] { ended = ++otherTurns >= 10; });
    other.start(0);
    QTRY_VERIFY(dry);
}

void TestEventGate::aFailingHandlerIsReportedAndTheRestArrives()
{
    class Boxes : public Prompts
    {
    public:
        Answer messageBox(const MessageBoxRequest &) override { return Answer::Ok; }
        QString inputBox(const InputBoxRequest &) override { return {}; }
        void errorBox(const RuntimeError &failure) override { numbers.append(failure.number()); }
        QList<int> numbers;
    } boxes;
    setPrompts(&boxes);
    QList<int> ends;
    setProgramEnd([&ends](int status) { ends.append(status); });
    EventGate::raise(this, [] { throw RuntimeError(error::Overflow); });
    raise(1);
    QTRY_COMPARE(m_log, QList<int>{1});
    setPrompts(nullptr);
    setProgramEnd({});
    QCOMPARE(boxes.numbers, QList<int>{error::Overflow});
    QCOMPARE(ends, QList<int>{1});
}

QTEST_GUILESS_MAIN(TestEventGate)
#include "TestEventGate.moc"

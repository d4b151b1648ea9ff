#include <random>

#include <QTest>

#include "runtime/Clock.h"
#include "runtime/Twips.h"
#include "runtime/Yield.h"

using namespace vandrel;

class TestTwipsAndClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Clock::reset(); }

    void anInchIsNinetySixPixels();
    void twipsAreRoundedToTheNearestPixel();
    void neighboursThatTouchInTwipsTouchInPixels();
    void theClockRunsUnlessItIsSet();
    void yieldingDeliversWhatIsPending();
};

void TestTwipsAndClock::anInchIsNinetySixPixels()
{
    QCOMPARE(pixels(1440), 96);
    QCOMPARE(twips(96), 1440);
    for (int i = -10'000; i <= 10'000; ++i)
        QCOMPARE(pixels(twips(i)), i);
}

void TestTwipsAndClock::twipsAreRoundedToTheNearestPixel()
{
    QCOMPARE(pixels(0), 0);
    QCOMPARE(pixels(7), 0);
    QCOMPARE(pixels(8), 1);
    QCOMPARE(pixels(22), 1);
    QCOMPARE(pixels(23), 2);
    QCOMPARE(pixels(-7), 0);
    QCOMPARE(pixels(-8), -1);
}

void TestTwipsAndClock::neighboursThatTouchInTwipsTouchInPixels()
{
    std::mt19937 random(20261121);
    std::uniform_int_distribution<int> place(-20'000, 20'000);
    std::uniform_int_distribution<int> extent(0, 10'000);
    for (int i = 0; i < 10'000; ++i) {
        const int left = place(random);
        const int top = place(random);
        const int width = extent(random);
        const int height = extent(random);
        const QRect rect = pixelRect(left, top, width, height);
        QCOMPARE(rect.topLeft(), QPoint(pixels(left), pixels(top)));
        QCOMPARE(pixelRect(left + width, top, width, height).left(), rect.left() + rect.width());
        QCOMPARE(pixelRect(left, top + height, width, height).top(), rect.top() + rect.height());
    }
}

void TestTwipsAndClock::theClockRunsUnlessItIsSet()
{
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime running = Clock::now();
    QVERIFY(running >= before);
    QVERIFY(running <= QDateTime::currentDateTime());

    const QDateTime midnight(QDate(2026, 11, 21), QTime(23, 59, 59, 600));
    Clock::set(midnight);
    QCOMPARE(Clock::now(), midnight);
    QCOMPARE(Clock::now(), midnight);

    Clock::reset();
    QVERIFY(Clock::now() != midnight);
}

void TestTwipsAndClock::yieldingDeliversWhatIsPending()
{
    bool delivered = false;
    QMetaObject::invokeMethod(
        this, [&delivered] { delivered = true; }, Qt::QueuedConnection);
    QVERIFY(!delivered);
    yieldToEvents();
    QVERIFY(delivered);
}

QTEST_GUILESS_MAIN(TestTwipsAndClock)
#include "TestTwipsAndClock.moc"

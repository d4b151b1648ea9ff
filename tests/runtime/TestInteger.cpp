#include <limits>
#include <random>

#include <QTest>

#include "runtime/Integer.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

namespace {

constexpr int smallest = std::numeric_limits<qint16>::min();
constexpr int largest = std::numeric_limits<qint16>::max();

bool fits(qint64 value)
{
    return value >= smallest && value <= largest;
}

} // namespace

class TestInteger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsAtZero();
    void countsToEitherEnd();
    void keepsItsValueWhenACountFails();
    void agreesWithWideArithmetic();
    void everyValueOutsideRaises();
    void comparesAndConvertsLikeANumber();
};

void TestInteger::startsAtZero()
{
    QCOMPARE(int{Integer().value()}, 0);
}

void TestInteger::countsToEitherEnd()
{
    Integer up(largest - 1);
    ++up;
    QCOMPARE(int{up.value()}, largest);
    QCOMPARE(test::numberOf([&] { ++up; }), error::Overflow);
    Integer down(smallest + 1);
    --down;
    QCOMPARE(int{down.value()}, smallest);
    QCOMPARE(test::numberOf([&] { --down; }), error::Overflow);
}

void TestInteger::keepsItsValueWhenACountFails()
{
    Integer counter(largest);
    QCOMPARE(test::numberOf([&] { counter += 1; }), error::Overflow);
    QCOMPARE(int{counter.value()}, largest);
    QCOMPARE(test::numberOf([&] { counter = 40000; }), error::Overflow);
    QCOMPARE(int{counter.value()}, largest);
}

void TestInteger::agreesWithWideArithmetic()
{
    std::mt19937 random(20261121);
    std::uniform_int_distribution<int> any(smallest, largest);
    for (int i = 0; i < 50'000; ++i) {
        const int left = any(random);
        const int right = any(random);
        Integer sum(left);
        QCOMPARE(test::numberOf([&] { sum += right; }), fits(left + right) ? 0 : error::Overflow);
        QCOMPARE(int{sum.value()}, fits(left + right) ? left + right : left);
        Integer difference(left);
        QCOMPARE(test::numberOf([&] { difference -= right; }), fits(left - right) ? 0 : error::Overflow);
        QCOMPARE(int{difference.value()}, fits(left - right) ? left - right : left);
    }
}

void TestInteger::everyValueOutsideRaises()
{
    for (const qint64 value : {qint64{largest} + 1, qint64{smallest} - 1, std::numeric_limits<qint64>::max(),
                               std::numeric_limits<qint64>::min()}) {
        QCOMPARE(test::numberOf([value] { Integer counter(value); }), error::Overflow);
        Integer counter(0);
        QCOMPARE(test::numberOf([&] { counter += value; }), error::Overflow);
        QCOMPARE(test::numberOf([&] { counter -= value; }), error::Overflow);
    }
}

void TestInteger::comparesAndConvertsLikeANumber()
{
    const Integer counter = 3;
    QVERIFY(counter == 3);
    QVERIFY(counter > 2);
    QVERIFY(counter < Integer(4));
    QCOMPARE(counter * 2, 6);
    // Sums of plain counters are wide until they are stored again.
    QCOMPARE(Integer(largest) + Integer(largest), 2 * largest);
}

QTEST_APPLESS_MAIN(TestInteger)
#include "TestInteger.moc"

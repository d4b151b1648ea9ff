#include <numeric>
#include <random>

#include <QTest>

#include "controls/BlockHeights.h"

using namespace vandrel;

namespace {

// The same, the slow and plain way.
struct Model {
    std::vector<int> heights;

    qint64 top(int index) const
    {
        return std::accumulate(heights.begin(), heights.begin() + index, qint64{0});
    }
    int indexAt(qint64 y) const
    {
        for (int i = 0; i < static_cast<int>(heights.size()); ++i) {
            y -= heights[static_cast<std::size_t>(i)];
            if (y < 0)
                return i;
        }
        return std::max(0, static_cast<int>(heights.size()) - 1);
    }
};

void compare(const BlockHeights &heights, const Model &model)
{
    const auto count = static_cast<int>(model.heights.size());
    QCOMPARE(heights.count(), count);
    QCOMPARE(heights.total(), model.top(count));
    for (int i = 0; i < count; i += 1 + count / 50) {
        QCOMPARE(static_cast<int>(heights.at(i).height), model.heights[static_cast<std::size_t>(i)]);
        QCOMPARE(heights.top(i), model.top(i));
        QCOMPARE(heights.indexAt(model.top(i)), model.indexAt(model.top(i)));
        QCOMPARE(heights.indexAt(model.top(i + 1) - 1), model.indexAt(model.top(i + 1) - 1));
    }
    QCOMPARE(heights.top(count), model.top(count));
}

} // namespace

class TestBlockHeights : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesAgreeWithASimpleModel();
    void placesOutsideAreTheFirstAndTheLast();
    void laidOutParagraphsAreCounted();
};

void TestBlockHeights::changesAgreeWithASimpleModel()
{
    std::mt19937 random(11);
    BlockHeights heights;
    heights.reset(10, 5);
    Model model{std::vector<int>(10, 5)};
    for (int round = 0; round < 400; ++round) {
        const auto count = static_cast<int>(model.heights.size());
        const int first = static_cast<int>(random() % static_cast<unsigned>(count));
        const int removed = static_cast<int>(random() % static_cast<unsigned>(std::min(count - first, 30)));
        const int added = 1 + static_cast<int>(random() % (round % 20 == 0 ? 1500U : 25U));
        const int estimate = 1 + static_cast<int>(random() % 9);
        heights.replace(first, removed, added, estimate);
        const auto from = model.heights.begin() + first;
        const auto behind = model.heights.erase(from, from + removed);
        model.heights.insert(behind, static_cast<std::size_t>(added), estimate);
        for (int i = 0; i < 5; ++i) {
            const int index = static_cast<int>(random() % static_cast<unsigned>(model.heights.size()));
            BlockHeights::Entry entry = heights.at(index);
            entry.height = static_cast<quint32>(1 + random() % 50) & 0xFF;
            model.heights[static_cast<std::size_t>(index)] = static_cast<int>(entry.height);
            heights.set(index, entry);
        }
        if (round % 20 == 0)
            compare(heights, model);
        if (QTest::currentTestFailed())
            return;
    }
    compare(heights, model);
}

void TestBlockHeights::placesOutsideAreTheFirstAndTheLast()
{
    BlockHeights heights;
    QCOMPARE(heights.indexAt(5), 0);
    heights.reset(3, 10);
    QCOMPARE(heights.indexAt(-1), 0);
    QCOMPARE(heights.indexAt(30), 2);
    QCOMPARE(heights.indexAt(1000), 2);
}

void TestBlockHeights::laidOutParagraphsAreCounted()
{
    BlockHeights heights;
    heights.reset(2000, 10);
    BlockHeights::Entry laidOut;
    laidOut.height = 12;
    laidOut.isMeasured = 1;
    laidOut.isLaidOut = 1;
    for (const int index : {0, 700, 1999})
        heights.set(index, laidOut);
    QCOMPARE(heights.laidOut(), 3);
    heights.replace(100, 5, 700, 10);
    QCOMPARE(heights.laidOutIndices(), (std::vector<int>{0, 1395, 2694}));
    heights.replace(1390, 10, 1, 10);
    QCOMPARE(heights.laidOut(), 2);
    std::vector<int> forgotten;
    heights.invalidateAll([&](int index) { forgotten.push_back(index); });
    QCOMPARE(forgotten, (std::vector<int>{0, 2685}));
    QCOMPARE(heights.laidOut(), 0);
    QVERIFY(!heights.at(0).isMeasured);
    QCOMPARE(static_cast<int>(heights.at(0).height), 12);
}

QTEST_APPLESS_MAIN(TestBlockHeights)
#include "TestBlockHeights.moc"

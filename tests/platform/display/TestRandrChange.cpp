#include <QTest>

#include "platform/display/RandrScreen.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

QString words(const QSize &size)
{
    return u"%1x%2"_s.arg(size.width()).arg(size.height());
}

/// A screen that records each step, and fails where a test wants.
class ScriptedScreen final : public RandrScreen
{
public:
    ScriptedScreen()
    {
        now.size = QSize(1920, 1080);
        now.smallest = QSize(320, 200);
        now.largest = QSize(8192, 8192);
        now.pictures = {{7, 100, QSize(1920, 1080), QRect(0, 0, 1920, 1080), false}};
        now.primary = 0;
        now.modes = {{100, QSize(1920, 1080), 60}, {101, QSize(1024, 768), 60},  {102, QSize(1024, 768), 75},
                     {103, QSize(1024, 768), 70},  {104, QSize(2560, 1440), 60}, {105, QSize(800, 600), 56}};
    }

    std::optional<RandrState> state() override { return isThere ? std::optional(now) : std::nullopt; }
    void hold() override { step(u"hold"_s); }
    void release() override { step(u"release"_s); }
    bool resize(const QSize &size) override { return step(u"screen "_s + words(size)); }
    bool setMode(quint32 controller, quint32 mode) override
    {
        return step(u"mode %1 on %2"_s.arg(mode).arg(controller));
    }

    QStringList change(int width, int height)
    {
        steps.clear();
        succeeded = changeMode(*this, {width, height});
        return steps;
    }

    bool isThere = true;
    RandrState now;
    /// The step that fails; later ones of the same words do not.
    QString failing;
    QStringList steps;
    bool succeeded = false;

private:
    bool step(const QString &name)
    {
        steps.append(name);
        if (name != failing)
            return true;
        failing.clear();
        return false;
    }
};

QStringList held(const QStringList &steps)
{
    return QStringList{u"hold"_s} + steps + QStringList{u"release"_s};
}

} // namespace

/// The steps of a change, on a screen that may fail at each of them.
class TestRandrChange : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHighestFrequencyIsTakenAndTheScreenShrinksAfterwards()
    {
        ScriptedScreen screen;
        QCOMPARE(screen.change(1024, 768), held({u"mode 102 on 7"_s, u"screen 1024x768"_s}));
        QVERIFY(screen.succeeded);
    }

    void theScreenGrowsBefore()
    {
        ScriptedScreen screen;
        QCOMPARE(screen.change(2560, 1440), held({u"screen 2560x1440"_s, u"mode 104 on 7"_s}));
        QVERIFY(screen.succeeded);
    }

    void theResolutionInForceNeedsNoStep()
    {
        ScriptedScreen screen;
        QCOMPARE(screen.change(1920, 1080), held({}));
        QVERIFY(screen.succeeded);
    }

    void otherMonitorsStayWhereTheyAre()
    {
        ScriptedScreen screen;
        screen.now.size = QSize(3200, 1080);
        screen.now.pictures.append({8, 200, QSize(1280, 1024), QRect(1920, 0, 1280, 1024), false});
        QCOMPARE(screen.change(1024, 768), held({u"mode 102 on 7"_s, u"screen 3200x1024"_s}));
        QVERIFY(screen.succeeded);
    }

    void aPrimaryMonitorOnTheRightGrowsTheScreenThere()
    {
        ScriptedScreen screen;
        screen.now.size = QSize(3200, 1080);
        screen.now.pictures.append({8, 200, QSize(1280, 1024), QRect(1920, 0, 1280, 1024), false});
        screen.now.primary = 1;
        screen.now.modes = {{200, QSize(1280, 1024), 60}, {201, QSize(1600, 1200), 60}};
        QCOMPARE(screen.change(1600, 1200), held({u"screen 3520x1200"_s, u"mode 201 on 8"_s}));
        QVERIFY(screen.succeeded);
    }

    void aMonitorOnItsSideIsAskedForTheModeThatLooksLikeThat()
    {
        ScriptedScreen screen;
        screen.now.size = QSize(1080, 1920);
        screen.now.pictures.first().area = QRect(0, 0, 1080, 1920);
        screen.now.pictures.first().isUpright = true;
        QCOMPARE(screen.change(768, 1024), held({u"mode 102 on 7"_s, u"screen 768x1024"_s}));
        QVERIFY(screen.succeeded);
        QCOMPARE(screen.change(1024, 768), held({}));
        QVERIFY(!screen.succeeded);
    }

    void anEnlargedPictureStaysEnlarged()
    {
        ScriptedScreen screen;
        screen.now.size = QSize(2880, 1620);
        screen.now.pictures.first().area = QRect(0, 0, 2880, 1620);
        QCOMPARE(screen.change(1024, 768), held({u"mode 102 on 7"_s, u"screen 1536x1152"_s}));
        QVERIFY(screen.succeeded);
    }

    void theScreenIsNeverSmallerThanItMayBe()
    {
        ScriptedScreen screen;
        screen.now.smallest = QSize(1000, 700);
        QCOMPARE(screen.change(800, 600), held({u"mode 105 on 7"_s, u"screen 1000x700"_s}));
        QVERIFY(screen.succeeded);
    }

    void whatIsNotOfferedIsRefusedWithoutAStep_data()
    {
        QTest::addColumn<QSize>("wanted");
        QTest::newRow("not offered") << QSize(640, 480);
        QTest::newRow("nothing") << QSize(0, 0);
        QTest::newRow("turned") << QSize(768, 1024);
        QTest::newRow("negative") << QSize(-1, -1);
    }
    void whatIsNotOfferedIsRefusedWithoutAStep()
    {
        QFETCH(QSize, wanted);
        ScriptedScreen screen;
        QCOMPARE(screen.change(wanted.width(), wanted.height()), held({}));
        QVERIFY(!screen.succeeded);
    }

    void aScreenThatMayNotGrowIsRefusedWithoutAStep()
    {
        ScriptedScreen screen;
        screen.now.largest = QSize(1920, 1080);
        QCOMPARE(screen.change(2560, 1440), held({}));
        QVERIFY(!screen.succeeded);
    }

    void withoutAMonitorOrAServerItIsRefused()
    {
        ScriptedScreen screen;
        screen.now.primary = -1;
        QCOMPARE(screen.change(1024, 768), held({}));
        QVERIFY(!screen.succeeded);
        screen.isThere = false;
        QCOMPARE(screen.change(1024, 768), held({}));
        QVERIFY(!screen.succeeded);
    }

    void aFailureHalfWayLeavesWhatWasInForce_data()
    {
        QTest::addColumn<QSize>("wanted");
        QTest::addColumn<QString>("failing");
        QTest::addColumn<QStringList>("steps");
        QTest::newRow("the screen does not grow")
            << QSize(2560, 1440) << u"screen 2560x1440"_s << QStringList{u"screen 2560x1440"_s};
        QTest::newRow("the mode is refused once the screen has grown")
            << QSize(2560, 1440) << u"mode 104 on 7"_s
            << QStringList{u"screen 2560x1440"_s, u"mode 104 on 7"_s, u"screen 1920x1080"_s};
        QTest::newRow("the mode is refused")
            << QSize(1024, 768) << u"mode 102 on 7"_s << QStringList{u"mode 102 on 7"_s};
        QTest::newRow("the screen does not shrink")
            << QSize(1024, 768) << u"screen 1024x768"_s
            << QStringList{u"mode 102 on 7"_s, u"screen 1024x768"_s, u"mode 100 on 7"_s};
    }
    void aFailureHalfWayLeavesWhatWasInForce()
    {
        QFETCH(QSize, wanted);
        QFETCH(QString, failing);
        QFETCH(QStringList, steps);
        ScriptedScreen screen;
        screen.failing = failing;
        QCOMPARE(screen.change(wanted.width(), wanted.height()), held(steps));
        QVERIFY(!screen.succeeded);
    }
};

QTEST_APPLESS_MAIN(TestRandrChange)
#include "TestRandrChange.moc"

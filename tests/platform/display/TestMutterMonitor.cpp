#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

#include "platform/display/MutterMonitor.h"
#include "tests/platform/bus/PrivateBus.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

// Bounds a wait, in milliseconds.
constexpr int patience = 60'000;

const QJsonArray usualModes{QJsonArray{1920, 1080, 60}, QJsonArray{1024, 768, 60}, QJsonArray{1024, 768, 75},
                            QJsonArray{800, 600, 60}};

QJsonObject monitor(const QString &connector, int x, int y, bool isPrimary)
{
    return {{u"connector"_s, connector}, {u"x"_s, x},         {u"y"_s, y},
            {u"scale"_s, 1.0},           {u"transform"_s, 0}, {u"primary"_s, isPrimary},
            {u"modes"_s, usualModes},    {u"current"_s, 0}};
}

QJsonObject with(QJsonObject monitor, const QString &key, const QJsonValue &value)
{
    monitor[key] = value;
    return monitor;
}

/// A compositor with these monitors on a bus of its own, and the adapter that asks it.
class Desktop
{
public:
    explicit Desktop(const QJsonArray &monitors, const QStringList &options = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, bus.address());
        m_compositor.setProcessEnvironment(environment);
        m_compositor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_compositor.start(
            u"/usr/bin/python3"_s,
            QStringList{qEnvironmentVariable("VANDREL_SOURCE_DIR") + u"/tests/servers/display_config.py"_s,
                        QString::fromUtf8(QJsonDocument(monitors).toJson(QJsonDocument::Compact))}
                + options);
        isThere = nextLine() == "ready";
    }

    ~Desktop()
    {
        m_compositor.kill();
        m_compositor.waitForFinished(patience);
    }

    // The configuration applied last, a line a monitor: connector, x, y, scale, transform, primary, mode.
    QStringList applied()
    {
        QStringList lines;
        for (const QJsonValue place : QJsonDocument::fromJson(nextLine()).array()) {
            QStringList words;
            for (const QJsonValue value : place.toArray())
                words.append(value.toVariant().toString());
            lines.append(words.join(u' '));
        }
        return lines;
    }

    // Whether anything was applied that applied() has not told.
    bool appliedMore() { return m_compositor.bytesAvailable() > 0 || m_compositor.waitForReadyRead(0); }

    PrivateBus bus;
    bool isThere = false;
    MutterMonitor adapter{bus.connection(u"suite"_s)};

private:
    QByteArray nextLine()
    {
        while (!m_compositor.canReadLine()) {
            if (!m_compositor.waitForReadyRead(patience))
                return {};
        }
        return m_compositor.readLine().trimmed();
    }

    QProcess m_compositor;
};

} // namespace

/// The primary monitor of a compositor that keeps to the interface's description.
class TestMutterMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHighestFrequencyOfTheSizeIsApplied()
    {
        Desktop desktop({monitor(u"DP-1"_s, 0, 0, true)});
        QVERIFY(desktop.isThere);
        QCOMPARE(desktop.adapter.resolution(), QSize(1920, 1080));
        QVERIFY(desktop.adapter.change({1024, 768}));
        QCOMPARE(desktop.applied(), QStringList{u"DP-1 0 0 1 0 true 1024x768@75"_s});
        QCOMPARE(desktop.adapter.resolution(), QSize(1024, 768));
        QVERIFY(desktop.adapter.change({1920, 1080}));
        QCOMPARE(desktop.adapter.resolution(), QSize(1920, 1080));
    }

    void neighboursMoveAlongAndKeepTheirModes_data()
    {
        QTest::addColumn<QJsonArray>("monitors");
        QTest::addColumn<QStringList>("applied");
        const QString changed = u" true 1024x768@75"_s;
        const QString kept = u" false 1920x1080@60"_s;
        QTest::newRow("to the right")
            << QJsonArray{monitor(u"A"_s, 0, 0, true), monitor(u"B"_s, 1920, 0, false)}
            << QStringList{u"A 0 0 1 0"_s + changed, u"B 1024 0 1 0"_s + kept};
        QTest::newRow("below") << QJsonArray{monitor(u"A"_s, 0, 0, true), monitor(u"B"_s, 0, 1080, false)}
                               << QStringList{u"A 0 0 1 0"_s + changed, u"B 0 768 1 0"_s + kept};
        QTest::newRow("to the left") << QJsonArray{monitor(u"A"_s, 0, 0, false),
                                                   monitor(u"B"_s, 1920, 0, true)}
                                     << QStringList{u"A 0 0 1 0"_s + kept, u"B 1920 0 1 0"_s + changed};
    }
    void neighboursMoveAlongAndKeepTheirModes()
    {
        QFETCH(QJsonArray, monitors);
        Desktop desktop(monitors);
        QVERIFY(desktop.isThere);
        QVERIFY(desktop.adapter.change({1024, 768}));
        QTEST(desktop.applied(), "applied");
    }

    void aMonitorOnItsSide()
    {
        Desktop desktop({with(monitor(u"A"_s, 0, 0, true), u"transform"_s, 1)});
        QVERIFY(desktop.isThere);
        QCOMPARE(desktop.adapter.resolution(), QSize(1080, 1920));
        QVERIFY(desktop.adapter.change({768, 1024}));
        QCOMPARE(desktop.applied(), QStringList{u"A 0 0 1 1 true 1024x768@75"_s});
        QVERIFY(!desktop.adapter.change({1024, 768}));
    }

    void aScaleThatTheModeHasStays()
    {
        Desktop desktop(
            {with(monitor(u"A"_s, 0, 0, true), u"scale"_s, 1.25), monitor(u"B"_s, 1536, 0, false)});
        QVERIFY(desktop.isThere);
        QVERIFY(desktop.adapter.change({1024, 768}));
        QCOMPARE(desktop.applied().first(), u"A 0 0 1.25 0 true 1024x768@75"_s);
        QVERIFY(desktop.adapter.change({800, 600}));
        QCOMPARE(desktop.applied().first(), u"A 0 0 1 0 true 800x600@60"_s);
    }

    void aMonitorThatIsOffStaysOff()
    {
        QJsonObject off = monitor(u"B"_s, 0, 0, false);
        off.remove(u"current"_s);
        Desktop desktop({monitor(u"A"_s, 0, 0, true), off});
        QVERIFY(desktop.isThere);
        QVERIFY(desktop.adapter.change({1024, 768}));
        QCOMPARE(desktop.applied(), QStringList{u"A 0 0 1 0 true 1024x768@75"_s});
    }

    void whatIsNotOfferedIsNotAskedFor_data()
    {
        QTest::addColumn<QSize>("wanted");
        QTest::newRow("not offered") << QSize(640, 480);
        QTest::newRow("nothing") << QSize(0, 0);
    }
    void whatIsNotOfferedIsNotAskedFor()
    {
        QFETCH(QSize, wanted);
        Desktop desktop({monitor(u"A"_s, 0, 0, true)});
        QVERIFY(desktop.isThere);
        QVERIFY(!desktop.adapter.change(wanted));
        QVERIFY(!desktop.appliedMore());
        QCOMPARE(desktop.adapter.resolution(), QSize(1920, 1080));
    }

    void aChangeThatTheCompositorTurnsDownFails_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("refused") << u"--refuse"_s;
        QTest::newRow("not done") << u"--forget"_s;
    }
    void aChangeThatTheCompositorTurnsDownFails()
    {
        QFETCH(QString, option);
        Desktop desktop({monitor(u"A"_s, 0, 0, true)}, {option});
        QVERIFY(desktop.isThere);
        QVERIFY(!desktop.adapter.change({1024, 768}));
        QCOMPARE(desktop.adapter.resolution(), QSize(1920, 1080));
    }

    void withoutMonitorsNothingIsKnown()
    {
        Desktop desktop({});
        QVERIFY(desktop.isThere);
        QVERIFY(desktop.adapter.resolution().isEmpty());
        QVERIFY(!desktop.adapter.change({1024, 768}));
    }

    void anotherDesktopRefuses()
    {
        PrivateBus bus;
        MutterMonitor adapter{bus.connection(u"suite"_s)};
        QVERIFY(adapter.resolution().isEmpty());
        QVERIFY(!adapter.change({1024, 768}));
        MutterMonitor nowhere{QDBusConnection(u"no such bus"_s)};
        QVERIFY(!nowhere.change({1024, 768}));
    }
};

QTEST_GUILESS_MAIN(TestMutterMonitor)
#include "TestMutterMonitor.moc"

#include <memory>

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "controls/ComboBox.h"
#include "platform/display/MutterMonitor.h"
#include "platform/display/SystemDisplay.h"
#include "platform/display/WlrMonitor.h"
#include "runtime/RuntimeError.h"
#include "system/frmRes.h"
#include "tests/platform/display/ScriptedOutputs.h"
#include "tests/platform/wayland/WaylandDesktop.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

using Mood = ScriptedOutputs::Mood;
using Monitor = ScriptedOutputs::Monitor;

const QList<WlrMode> usualModes{{QSize(1920, 1080), 60'000},
                                {QSize(1024, 768), 60'000},
                                {QSize(1024, 768), 75'000},
                                {QSize(800, 600), 60'000}};

Monitor monitor(const QString &name, QPoint place = {}, int current = 0)
{
    return {name, usualModes, current, place, 0, false};
}

std::unique_ptr<SystemDisplay> displayOfDesktop()
{
    return std::make_unique<SystemDisplay>(PrimaryMonitor::ofDesktop(), [] {
        return DisplayFacts{u"driver"_s, u"description"_s, u"id"_s, u"maker"_s};
    });
}

} // namespace

/// The primary monitor of compositors that offer zwlr_output_manager_v1: a scripted one with every mood, and a real one.
class TestWlrMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHighestFrequencyIsTestedAndApplied()
    {
        ScriptedOutputs desktop({monitor(u"A"_s)});
        QVERIFY(desktop.isThere());
        WlrMonitor adapter;
        QCOMPARE(adapter.resolution(), QSize(1920, 1080));
        QVERIFY(adapter.change({1024, 768}));
        QCOMPARE(adapter.resolution(), QSize(1024, 768));
        QCOMPARE(desktop.asked(), QStringList({u"test A=1024x768@75"_s, u"apply A=1024x768@75"_s}));
    }

    void otherMonitorsAreLeftAsTheyAre()
    {
        ScriptedOutputs desktop({monitor(u"B"_s, {1920, 0}), monitor(u"A"_s), monitor(u"C"_s, {0, 0}, -1)});
        QVERIFY(WlrMonitor().change({800, 600}));
        QCOMPARE(desktop.asked(),
                 QStringList({u"test B=kept A=800x600@60 C=off"_s, u"apply B=kept A=800x600@60 C=off"_s}));
    }

    void aMonitorOnItsSide()
    {
        Monitor upright = monitor(u"A"_s);
        upright.transform = 3;
        ScriptedOutputs desktop({upright});
        WlrMonitor adapter;
        QCOMPARE(adapter.resolution(), QSize(1080, 1920));
        QVERIFY(!adapter.change({1024, 768}));
        QVERIFY(adapter.change({768, 1024}));
        QCOMPARE(adapter.resolution(), QSize(768, 1024));
        QCOMPARE(desktop.asked(), QStringList({u"test A=1024x768@75"_s, u"apply A=1024x768@75"_s}));
    }

    void theResolutionInForceNeedsNoChange()
    {
        ScriptedOutputs desktop({monitor(u"A"_s)});
        QVERIFY(WlrMonitor().change({1920, 1080}));
        QCOMPARE(desktop.asked(), QStringList());
    }

    void aVirtualMonitorTakesAnySize()
    {
        Monitor virtualOne{u"A"_s, {{QSize(1280, 720), 0}}, 0, {}, 0, true};
        ScriptedOutputs desktop({virtualOne});
        WlrMonitor adapter;
        QVERIFY(adapter.change({1024, 768}));
        QCOMPARE(adapter.resolution(), QSize(1024, 768));
        QCOMPARE(desktop.asked(), QStringList({u"test A=custom 1024x768"_s, u"apply A=custom 1024x768"_s}));
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
        ScriptedOutputs desktop({monitor(u"A"_s)});
        QVERIFY(!WlrMonitor().change(wanted));
        QCOMPARE(desktop.asked(), QStringList());
    }

    void aChangeThatFailsLeavesWhatWasInForce_data()
    {
        const QString test = u"test A=800x600@60"_s;
        const QString apply = u"apply A=800x600@60"_s;
        const QString back = u"apply A=1920x1080@60"_s;
        QTest::addColumn<QList<Mood>>("moods");
        QTest::addColumn<QStringList>("asked");
        QTest::newRow("refused beforehand") << QList<Mood>{Mood::Refuse} << QStringList{test};
        QTest::newRow("refused") << QList<Mood>{Mood::Agree, Mood::Refuse} << QStringList{test, apply};
        QTest::newRow("half done") << QList<Mood>{Mood::Agree, Mood::DoAndRefuse}
                                   << QStringList{test, apply, back};
        QTest::newRow("not done") << QList<Mood>{Mood::Agree, Mood::Forget} << QStringList{test, apply};
        QTest::newRow("never the right moment")
            << QList<Mood>{Mood::Cancel, Mood::Cancel, Mood::Cancel} << QStringList{test, test, test};
        QTest::newRow("hung up") << QList<Mood>{Mood::Agree, Mood::HangUp} << QStringList{test, apply};
    }
    void aChangeThatFailsLeavesWhatWasInForce()
    {
        QFETCH(QList<Mood>, moods);
        ScriptedOutputs desktop({monitor(u"A"_s)}, moods);
        QVERIFY(!WlrMonitor().change({800, 600}));
        QCOMPARE(WlrMonitor().resolution(), QSize(1920, 1080));
        QTEST(desktop.asked(), "asked");
    }

    void aChangeOfTheMonitorsMeanwhileBeginsItAnew_data()
    {
        const QString test = u"test A=800x600@60"_s;
        const QString apply = u"apply A=800x600@60"_s;
        QTest::addColumn<QList<Mood>>("moods");
        QTest::addColumn<QStringList>("asked");
        QTest::newRow("in the test") << QList<Mood>{Mood::Cancel} << QStringList{test, test, apply};
        QTest::newRow("in the change")
            << QList<Mood>{Mood::Agree, Mood::Cancel} << QStringList{test, apply, test, apply};
    }
    void aChangeOfTheMonitorsMeanwhileBeginsItAnew()
    {
        QFETCH(QList<Mood>, moods);
        ScriptedOutputs desktop({monitor(u"A"_s)}, moods);
        QVERIFY(WlrMonitor().change({800, 600}));
        QTEST(desktop.asked(), "asked");
    }

    void withoutAMonitorNothingIsKnown_data()
    {
        QTest::addColumn<QList<Monitor>>("monitors");
        QTest::newRow("none") << QList<Monitor>();
        QTest::newRow("off") << QList<Monitor>{monitor(u"A"_s, {}, -1)};
    }
    void withoutAMonitorNothingIsKnown()
    {
        QFETCH(QList<Monitor>, monitors);
        ScriptedOutputs desktop(monitors);
        QVERIFY(WlrMonitor().resolution().isEmpty());
        QVERIFY(!WlrMonitor().change({800, 600}));
        QCOMPARE(desktop.asked(), QStringList());
    }

    void withoutACompositorNothingIsKnown()
    {
        qputenv("WAYLAND_DISPLAY", "wayland-nowhere");
        QVERIFY(!WlrMonitor::isOffered());
        QVERIFY(WlrMonitor().resolution().isEmpty());
        QVERIFY(!WlrMonitor().change({800, 600}));
        qunsetenv("WAYLAND_DISPLAY");
    }

    void theWindowOnARealDesktop()
    {
        if (!WaylandDesktop::has(WaylandDesktop::sway()))
            QSKIP("Sway is not installed.");
        const WaylandDesktop desktop(WaylandDesktop::sway(), 2,
                                     "output HEADLESS-1 position 0 0\noutput HEADLESS-2 position 1280 0");
        QVERIFY(desktop.isThere());
        const QString other = u"HEADLESS-2 1280,0 1280x720"_s;
        QCOMPARE(desktop.monitors(), QStringList({u"HEADLESS-1 0,0 1280x720"_s, other}));
        frmRes form(displayOfDesktop());
        QCOMPARE(form.width1->text(), u"1280"_s);
        QCOMPARE(form.height1->text(), u"720"_s);
        form.NewSettingCommand->click();
        QCOMPARE(desktop.monitors(), QStringList({u"HEADLESS-1 0,0 1024x768"_s, other}));
        form.Combo1->setListIndex(0);
        form.NewSettingCommand->click();
        QCOMPARE(desktop.monitors(), QStringList({u"HEADLESS-1 0,0 640x480"_s, other}));
        QTest::keyClick(&form, Qt::Key_Escape);
        QCOMPARE(desktop.monitors(), QStringList({u"HEADLESS-1 0,0 1024x768"_s, other}));
        form.Combo1->setListIndex(1);
        form.NewSettingCommand->click();
        QCOMPARE(desktop.monitors(), QStringList({u"HEADLESS-1 0,0 800x600"_s, other}));
    }

    void aMonitorOnItsSideOnARealDesktop()
    {
        if (!WaylandDesktop::has(WaylandDesktop::sway()))
            QSKIP("Sway is not installed.");
        const WaylandDesktop desktop(WaylandDesktop::sway(), 1, "output HEADLESS-1 transform 90");
        QVERIFY(desktop.isThere());
        WlrMonitor adapter;
        QCOMPARE(adapter.resolution(), QSize(720, 1280));
        QVERIFY(adapter.change({600, 800}));
        QCOMPARE(desktop.monitors(), QStringList(u"HEADLESS-1 0,0 800x600"_s));
        QCOMPARE(adapter.resolution(), QSize(600, 800));
    }

    void aDesktopWithoutTheInterfaceRefuses()
    {
        if (!WaylandDesktop::has(WaylandDesktop::weston()))
            QSKIP("Weston is not installed.");
        const WaylandDesktop desktop(WaylandDesktop::weston());
        QVERIFY(desktop.isThere());
        QVERIFY(!WlrMonitor::isOffered());
        QVERIFY(!WlrMonitor().change({800, 600}));
        ScriptedPrompts prompts;
        const ProgramEndSpy end;
        prompts.expectError(error::ObjectRequired);
        frmRes form(displayOfDesktop());
        QCOMPARE(form.width1->text(), u"0"_s);
        form.NewSettingCommand->click();
        QVERIFY(prompts.allShown());
        QCOMPARE(end.count(), 1);
    }

    void theWayFitsTheDesktop()
    {
        {
            const ScriptedOutputs desktop({monitor(u"A"_s)});
            QVERIFY(dynamic_cast<WlrMonitor *>(PrimaryMonitor::ofDesktop().get()));
        }
        qputenv("WAYLAND_DISPLAY", "wayland-nowhere");
        QVERIFY(dynamic_cast<MutterMonitor *>(PrimaryMonitor::ofDesktop().get()));
        qunsetenv("WAYLAND_DISPLAY");
    }
};

QTEST_MAIN(TestWlrMonitor)
#include "TestWlrMonitor.moc"

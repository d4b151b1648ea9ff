#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/display/KScreenMonitor.h"
#include "platform/display/MutterMonitor.h"
#include "platform/display/RandrMonitor.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

// Two monitors, of which the second comes first.
QByteArray list(const QByteArray &currentMode, const QByteArray &rotation = "1")
{
    return R"({"outputs": [
        {"name": "HDMI-1", "enabled": true, "priority": 2, "currentModeId": "1", "rotation": 1,
         "modes": [{"id": "1", "size": {"width": 1280, "height": 1024}, "refreshRate": 60}]},
        {"name": "eDP-1", "enabled": true, "priority": 1, "currentModeId": ")"
        + currentMode + R"(", "rotation": )" + rotation + R"(,
         "modes": [{"id": "7", "size": {"width": 1920, "height": 1080}, "refreshRate": 60},
                   {"id": "8", "size": {"width": 1024, "height": 768}, "refreshRate": 59.9},
                   {"id": "9", "size": {"width": 1024, "height": 768}, "refreshRate": 75.03},
                   {"id": "10", "size": {"width": 800, "height": 600}, "refreshRate": 60}]},
        {"name": "DP-3", "enabled": false, "modes": []}]})";
}

/// The desktop's program, which tells a list, notes what it is told, and tells another list from then on.
class Program
{
public:
    Program()
    {
        write(u"kscreen-doctor"_s,
              "#!/bin/sh\ncd \"$(dirname \"$0\")\"\n"
              "if [ \"$1\" = --json ]; then cat list; exit; fi\n"
              "echo \"$@\" >> orders\n[ ! -e \"after $1\" ] || cp \"after $1\" list\n");
        QFile::setPermissions(path(),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    void write(const QString &name, const QByteArray &text) const
    {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("A file of the test could not be written.");
    }

    QString path() const { return folder.filePath(u"kscreen-doctor"_s); }

    QByteArray orders() const
    {
        QFile file(folder.filePath(u"orders"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    const QTemporaryDir folder;
};

} // namespace

/// The primary monitor of a desktop that is told by a program.
class TestKScreenMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHighestFrequencyOfTheSizeIsOrdered()
    {
        const Program program;
        program.write(u"list"_s, list("7"));
        program.write(u"after output.eDP-1.mode.9"_s, list("9"));
        KScreenMonitor monitor(program.path());
        QCOMPARE(monitor.resolution(), QSize(1920, 1080));
        QVERIFY(monitor.change({1024, 768}));
        QCOMPARE(program.orders(), QByteArray("output.eDP-1.mode.9\n"));
        QCOMPARE(monitor.resolution(), QSize(1024, 768));
    }

    void theResolutionInForceNeedsNoOrder()
    {
        const Program program;
        program.write(u"list"_s, list("7"));
        QVERIFY(KScreenMonitor(program.path()).change({1920, 1080}));
        QCOMPARE(program.orders(), QByteArray());
    }

    void aMonitorOnItsSide()
    {
        const Program program;
        program.write(u"list"_s, list("7", "2"));
        program.write(u"after output.eDP-1.mode.10"_s, list("10", "2"));
        KScreenMonitor monitor(program.path());
        QCOMPARE(monitor.resolution(), QSize(1080, 1920));
        QVERIFY(monitor.change({600, 800}));
        QVERIFY(!monitor.change({1024, 768}));
    }

    void whatIsNotOfferedIsNotOrdered_data()
    {
        QTest::addColumn<QSize>("wanted");
        QTest::newRow("not offered") << QSize(640, 480);
        QTest::newRow("another monitor's") << QSize(1280, 1024);
        QTest::newRow("nothing") << QSize(0, 0);
    }
    void whatIsNotOfferedIsNotOrdered()
    {
        QFETCH(QSize, wanted);
        const Program program;
        program.write(u"list"_s, list("7"));
        QVERIFY(!KScreenMonitor(program.path()).change(wanted));
        QCOMPARE(program.orders(), QByteArray());
    }

    void aChangeThatIsNotDoneFails()
    {
        const Program program;
        program.write(u"list"_s, list("7"));
        QVERIFY(!KScreenMonitor(program.path()).change({800, 600}));
        QCOMPARE(program.orders(), QByteArray("output.eDP-1.mode.10\n"));
    }

    void aChangeToSomethingElseIsTakenBack()
    {
        const Program program;
        program.write(u"list"_s, list("7"));
        program.write(u"after output.eDP-1.mode.10"_s, list("8"));
        program.write(u"after output.eDP-1.mode.7"_s, list("7"));
        KScreenMonitor monitor(program.path());
        QVERIFY(!monitor.change({800, 600}));
        QCOMPARE(program.orders(), QByteArray("output.eDP-1.mode.10\noutput.eDP-1.mode.7\n"));
        QCOMPARE(monitor.resolution(), QSize(1920, 1080));
    }

    void nonsenseTellsNothing_data()
    {
        QTest::addColumn<QByteArray>("told");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no list") << QByteArray("outputs: many");
        QTest::newRow("another shape") << QByteArray(R"({"outputs": {"name": 1}})");
        QTest::newRow("no monitor") << QByteArray(
            R"({"outputs": [{"name": "A", "enabled": false}, 5, null]})");
        QTest::newRow("no modes") << QByteArray(
            R"({"outputs": [{"name": "A", "enabled": true, "modes": [1, {"id": 5}]}]})");
        QTest::newRow("cut off") << list("7").left(300);
    }
    void nonsenseTellsNothing()
    {
        QFETCH(QByteArray, told);
        const Program program;
        program.write(u"list"_s, told);
        KScreenMonitor monitor(program.path());
        QVERIFY(monitor.resolution().isEmpty());
        QVERIFY(!monitor.change({1024, 768}));
        QCOMPARE(program.orders(), QByteArray());
    }

    void theWayFitsTheDesktop_data()
    {
        QTest::addColumn<QByteArray>("wayland");
        QTest::addColumn<QByteArray>("desktop");
        QTest::addColumn<QString>("way");
        QTest::newRow("X11") << QByteArray() << QByteArray("KDE") << u"RandR"_s;
        QTest::newRow("a variable left empty") << QByteArray("") << QByteArray("GNOME") << u"RandR"_s;
        QTest::newRow("KDE") << QByteArray("wayland-0") << QByteArray("KDE") << u"KScreen"_s;
        QTest::newRow("one of several names")
            << QByteArray("wayland-0") << QByteArray("X-Own:kde") << u"KScreen"_s;
        QTest::newRow("GNOME") << QByteArray("wayland-0") << QByteArray("ubuntu:GNOME") << u"Mutter"_s;
        QTest::newRow("unknown") << QByteArray("wayland-0") << QByteArray() << u"Mutter"_s;
    }
    void theWayFitsTheDesktop()
    {
        QFETCH(QByteArray, wayland);
        QFETCH(QByteArray, desktop);
        qputenv("WAYLAND_DISPLAY", wayland);
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        const std::unique_ptr<PrimaryMonitor> monitor = PrimaryMonitor::ofDesktop();
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("XDG_CURRENT_DESKTOP");
        QString way = u"KScreen"_s;
        if (dynamic_cast<RandrMonitor *>(monitor.get()))
            way = u"RandR"_s;
        else if (dynamic_cast<MutterMonitor *>(monitor.get()))
            way = u"Mutter"_s;
        QTEST(way, "way");
    }

    void withoutTheProgramItRefuses()
    {
        KScreenMonitor monitor(u"/no/such/program"_s);
        QVERIFY(monitor.resolution().isEmpty());
        QVERIFY(!monitor.change({1024, 768}));
    }
};

QTEST_GUILESS_MAIN(TestKScreenMonitor)
#include "TestKScreenMonitor.moc"

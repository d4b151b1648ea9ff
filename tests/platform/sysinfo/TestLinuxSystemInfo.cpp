
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include "platform/sysinfo/LinuxFacts.h"
#include "platform/sysinfo/LinuxMemory.h"
#include "platform/sysinfo/LinuxSystemInfo.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

constexpr qint64 mebi = 1024 * 1024;

/// A computer made of files.
class Machine
{
public:
    void has(const QString &path, const QByteArray &contents) const
    {
        const QString file = m_root.path() + path;
        QVERIFY(QDir().mkpath(QFileInfo(file).path()));
        QFile made(file);
        QVERIFY(made.open(QIODevice::WriteOnly));
        QCOMPARE(made.write(contents), contents.size());
    }
    /// 8 GB of memory of which 6 are available, and 2 GB of swap space of which 1 is free.
    void hasMemory() const
    {
        has(u"/proc/meminfo"_s,
            "MemTotal:        8388608 kB\nMemFree:          100000 kB\n"
            "MemAvailable:    6291456 kB\nBuffers:  1 kB\nCached: 1 kB\n"
            "SwapTotal:       2097152 kB\nSwapFree:        1048576 kB\n"
            "VmallocTotal:   34359738367 kB\nHugePages_Total: 0\n");
    }
    QString root() const { return m_root.path(); }
    LinuxSystemInfo info() const { return LinuxSystemInfo(root()); }

private:
    QTemporaryDir m_root;
};

QString answerOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() ? QString::fromLocal8Bit(process.readAllStandardOutput()).trimmed()
                                     : QString();
}

QStringList memoryTexts(const LinuxSystemInfo &info)
{
    return {info.TotalPhysicalMemory(), info.AvailablePhysicalMemory(), info.TotalVirtualMemory(),
            info.AvailableVirtualMemory()};
}

} // namespace

/// The facts of a Linux system, from files made for the purpose and from the running one.
class TestLinuxSystemInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProcessorIsNamed_data()
    {
        QTest::addColumn<QByteArray>("cpuInfo");
        QTest::addColumn<QByteArray>("board");
        QTest::addColumn<QString>("expected");
        QTest::newRow("first of two") << QByteArray("processor\t: 0\nmodel\t\t: 142\n"
                                                    "model name\t: Fast  CPU(R) @ 2.00GHz\n\n"
                                                    "processor\t: 1\nmodel name\t: Other\n")
                                      << QByteArray() << u"Fast CPU(R) @ 2.00GHz"_s;
        QTest::newRow("board") << QByteArray("processor\t: 0\nBogoMIPS\t: 108.00\n")
                               << QByteArray("Small Board Rev 1.4\0", 20) << u"Small Board Rev 1.4"_s;
        QTest::newRow("empty name") << QByteArray("model name\t:\nflags: x\n") << QByteArray()
                                    << QSysInfo::currentCpuArchitecture();
        QTest::newRow("nothing") << QByteArray() << QByteArray() << QSysInfo::currentCpuArchitecture();
    }
    void theProcessorIsNamed()
    {
        QFETCH(QByteArray, cpuInfo);
        QFETCH(QByteArray, board);
        const Machine machine;
        machine.has(u"/proc/cpuinfo"_s, cpuInfo);
        machine.has(u"/proc/device-tree/model"_s, board);
        QTEST(machine.info().CPUType(), "expected");
    }

    void memoryIsThatOfTheMachine()
    {
        const Machine machine;
        machine.hasMemory();
        QCOMPARE(memoryTexts(machine.info()),
                 QStringList({u"8192 MB"_s, u"6144 MB"_s, u"10240 MB"_s, u"7168 MB"_s}));
    }

    void anOldKernelDoesNotSayWhatIsAvailable()
    {
        const MemoryState memory
            = machineMemory("MemTotal: 4096 kB\nMemFree: 1024 kB\nBuffers: 512 kB\nCached: 512 kB\n");
        QCOMPARE(memory.available, 2 * mebi);
        QCOMPARE(memory.swapTotal, 0);
    }

    void memoryThatNobodyTellsIsUnknown_data()
    {
        QTest::addColumn<QByteArray>("memInfo");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no numbers") << QByteArray("MemTotal: lots kB\nMemAvailable:\n:\n\n");
        QTest::newRow("negative") << QByteArray("MemTotal: -1 kB\nMemAvailable: -5 kB\n");
    }
    void memoryThatNobodyTellsIsUnknown()
    {
        QFETCH(QByteArray, memInfo);
        const Machine machine;
        machine.has(u"/proc/meminfo"_s, memInfo);
        QCOMPARE(memoryTexts(machine.info()), QStringList(4, u"Unknown"_s));
    }

    void aContainerHasWhatItsGroupsMayUse_data()
    {
        QTest::addColumn<QByteArray>("groups");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("limitFile");
        QTest::addColumn<QString>("usedFile");
        QTest::addColumn<QByteArray>("reclaimable");
        QTest::newRow("v2, its own root") << QByteArray("0::/\n") << u"/sys/fs/cgroup"_s << u"memory.max"_s
                                          << u"memory.current"_s << QByteArray("inactive_file 104857600\n");
        QTest::newRow("v2, a group above")
            << QByteArray("0::/user.slice/user-1000.slice/app\n") << u"/sys/fs/cgroup/user.slice"_s
            << u"memory.max"_s << u"memory.current"_s << QByteArray("anon 5\ninactive_file 104857600\n");
        QTest::newRow("v1") << QByteArray("12:cpu,cpuacct:/x\n5:memory:/box/1\n1:name=systemd:/\n")
                            << u"/sys/fs/cgroup/memory/box/1"_s << u"memory.limit_in_bytes"_s
                            << u"memory.usage_in_bytes"_s << QByteArray("total_inactive_file 104857600\n");
        QTest::newRow("v1, a path of its host")
            << QByteArray("5:memory:/docker/abc\n") << u"/sys/fs/cgroup/memory"_s
            << u"memory.limit_in_bytes"_s << u"memory.usage_in_bytes"_s
            << QByteArray("total_inactive_file 104857600\n");
    }
    void aContainerHasWhatItsGroupsMayUse()
    {
        QFETCH(QByteArray, groups);
        QFETCH(QString, folder);
        QFETCH(QString, limitFile);
        QFETCH(QString, usedFile);
        QFETCH(QByteArray, reclaimable);
        const Machine machine;
        machine.hasMemory();
        machine.has(u"/proc/self/cgroup"_s, groups);
        machine.has(folder + u'/' + limitFile, QByteArray::number(1000 * mebi) + '\n');
        machine.has(folder + u'/' + usedFile, QByteArray::number(400 * mebi) + '\n');
        machine.has(folder + u"/memory.stat"_s, reclaimable);
        QCOMPARE(memoryTexts(machine.info()),
                 QStringList({u"1000 MB"_s, u"700 MB"_s, u"3048 MB"_s, u"1724 MB"_s}));
    }

    void aGroupWithoutALimitChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("limit");
        QTest::newRow("max") << QByteArray("max\n");
        QTest::newRow("beyond any memory") << QByteArray("9223372036854771712\n");
        QTest::newRow("rubbish") << QByteArray("-1 -1\n");
    }
    void aGroupWithoutALimitChangesNothing()
    {
        QFETCH(QByteArray, limit);
        const Machine machine;
        machine.hasMemory();
        machine.has(u"/proc/self/cgroup"_s, "0::/a\n");
        machine.has(u"/sys/fs/cgroup/a/memory.max"_s, limit);
        machine.has(u"/sys/fs/cgroup/a/memory.current"_s, "1048576\n");
        QCOMPARE(machine.info().TotalPhysicalMemory(), u"8192 MB"_s);
        QCOMPARE(machine.info().AvailablePhysicalMemory(), u"6144 MB"_s);
    }

    void aGroupThatUsesMoreThanItMayHasNothingLeft()
    {
        const Machine machine;
        machine.hasMemory();
        machine.has(u"/proc/self/cgroup"_s, "0::/\n");
        machine.has(u"/sys/fs/cgroup/memory.max"_s, "1048576\n");
        machine.has(u"/sys/fs/cgroup/memory.current"_s, "2097152\n");
        QCOMPARE(ownMemory(machine.root()).available, 0);
        QCOMPARE(ownMemory(machine.root()).total, mebi);
    }

    void soundCards_data()
    {
        QTest::addColumn<QByteArray>("cards");
        QTest::addColumn<bool>("isPresent");
        QTest::newRow("one") << QByteArray(" 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n"
                                           "                      HDA Intel PCH at 0xf7f30000 irq 32\n")
                             << true;
        QTest::newRow("second slot") << QByteArray("12 [Loopback       ]: Loopback - Loopback\n") << true;
        QTest::newRow("none") << QByteArray("--- no soundcards ---\n") << false;
        QTest::newRow("no sound system") << QByteArray() << false;
    }
    void soundCards()
    {
        QFETCH(QByteArray, cards);
        const Machine machine;
        if (!cards.isEmpty())
            machine.has(u"/proc/asound/cards"_s, cards);
        QTEST(machine.info().SoundCardPresent(), "isPresent");
    }

    void theMakerIsWhoItReallyIs_data()
    {
        QTest::addColumn<QByteArray>("system");
        QTest::addColumn<QByteArray>("board");
        QTest::addColumn<QByteArray>("tree");
        QTest::addColumn<QByteArray>("hypervisor");
        QTest::addColumn<QString>("maker");
        QTest::newRow("system") << QByteArray("Fine Computers, Inc.\n") << QByteArray("Boards Ltd\n")
                                << QByteArray() << QByteArray() << u"Fine Computers, Inc."_s;
        QTest::newRow("board") << QByteArray("To Be Filled By O.E.M.\n") << QByteArray("Boards Ltd\n")
                               << QByteArray() << QByteArray() << u"Boards Ltd"_s;
        QTest::newRow("device tree") << QByteArray("Default string\n") << QByteArray("Default string\n")
                                     << QByteArray("smallboards,model-4\0chip,2711\0", 31) << QByteArray()
                                     << u"smallboards"_s;
        QTest::newRow("virtual machine")
            << QByteArray() << QByteArray() << QByteArray() << QByteArray("xen\n") << u"xen"_s;
        QTest::newRow("nobody") << QByteArray(" \n") << QByteArray("System manufacturer\n") << QByteArray()
                                << QByteArray() << u"Unknown"_s;
    }
    void theMakerIsWhoItReallyIs()
    {
        QFETCH(QByteArray, system);
        QFETCH(QByteArray, board);
        QFETCH(QByteArray, tree);
        QFETCH(QByteArray, hypervisor);
        const Machine machine;
        machine.has(u"/sys/class/dmi/id/sys_vendor"_s, system);
        machine.has(u"/sys/class/dmi/id/board_vendor"_s, board);
        machine.has(u"/proc/device-tree/compatible"_s, tree);
        machine.has(u"/sys/hypervisor/type"_s, hypervisor);
        QTEST(machine.info().ComputerManufacturer(), "maker");
    }

    void theRunningSystemAgreesWithItsOwnTools()
    {
        const LinuxSystemInfo info;
        QCOMPARE(info.ComputerName(), answerOf(u"uname"_s, {u"-n"_s}));
        QCOMPARE(info.User(), answerOf(u"id"_s, {u"-un"_s}));
        QVERIFY2(info.OperatingSystem().endsWith(u"Linux "_s + answerOf(u"uname"_s, {u"-r"_s})),
                 qPrintable(info.OperatingSystem()));
        QCOMPARE(info.Company(), QString());
    }

    void theRunningSystemsMemoryIsThatOfItsOwnTools()
    {
        const QString free = answerOf(u"free"_s, {u"-m"_s});
        if (free.isEmpty())
            QSKIP("free is not there");
        const qint64 total = free.section(u'\n', 1, 1).simplified().section(u' ', 1, 1).toLongLong();
        const qint64 ours = LinuxSystemInfo().TotalPhysicalMemory().section(u' ', 0, 0).toLongLong();
        QVERIFY(total > 0);
        // A limit of this process's group can only make it less.
        QVERIFY2(ours > 0 && ours <= total, qPrintable(free));
    }

    void theDisplayIsThePrimaryScreen()
    {
        const QScreen *screen = QGuiApplication::primaryScreen();
        const QSize pixels = screen->size() * screen->devicePixelRatio();
        QCOMPARE(LinuxSystemInfo().CurrentDisplay(),
                 u"%1 x %2, %3 bit"_s.arg(pixels.width()).arg(pixels.height()).arg(screen->depth()));
    }

    void thePrinterHasAName()
    {
        const QString printer = LinuxSystemInfo().Printer();
        const QString told = answerOf(u"lpstat"_s, {u"-d"_s});
        if (told.isEmpty() || told.startsWith(u"no "))
            QCOMPARE(printer, u"None"_s);
        else
            QVERIFY2(told.endsWith(u' ' + printer), qPrintable(told));
    }
};

QTEST_MAIN(TestLinuxSystemInfo)
#include "TestLinuxSystemInfo.moc"

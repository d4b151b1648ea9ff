#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/display/DisplayFacts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

const QByteArray list = "# Maintained by nobody.\n"
                        "\n"
                        "1002  Example Micro\n"
                        "\t15dd  Picture Maker [Blue]\n"
                        "\t\t1002 15dd  A board\n"
                        "8086  Example Chips\n"
                        "\t15dd  Not this one\n"
                        "\t3e92  Display 630\n"
                        "\t\t1002 3e92  Another board\n"
                        "C 03  Display controller\n"
                        "\t00  VGA compatible controller\n";

/// A computer's folder of adapters.
class Computer
{
public:
    void write(const QString &path, const QByteArray &text) const
    {
        const QString whole = folder.filePath(path);
        QDir().mkpath(whole.section(u'/', 0, -2));
        QFile file(whole);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("A file of the test could not be written.");
    }

    void addPci(const QString &card, const QByteArray &vendor, const QByteArray &device, bool starts) const
    {
        const QString place = u"drm/%1/device/"_s.arg(card);
        write(place + u"vendor"_s, vendor + '\n');
        write(place + u"device"_s, device + '\n');
        write(place + u"boot_vga"_s, starts ? "1\n" : "0\n");
    }

    void setDriver(const QString &card, const QString &name) const
    {
        QDir().mkpath(folder.filePath(u"drivers/"_s + name));
        QFile::link(folder.filePath(u"drivers/"_s + name),
                    folder.filePath(u"drm/%1/device/driver"_s.arg(card)));
    }

    DisplayFacts facts() const
    {
        return displayFacts(
            {folder.filePath(u"drm"_s), {folder.filePath(u"none.ids"_s), folder.filePath(u"pci.ids"_s)}});
    }

    const QTemporaryDir folder;
};

QStringList words(const DisplayFacts &facts)
{
    return {facts.driver, facts.description, facts.hardwareId, facts.manufacturer};
}

} // namespace

/// What is said of display adapters of all kinds.
class TestDisplayFacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAdapterOfTheList()
    {
        const Computer computer;
        computer.write(u"pci.ids"_s, list);
        computer.addPci(u"card0"_s, "0x8086", "0x3e92", true);
        computer.write(u"drm/card0/device/subsystem_vendor"_s, "0x1028\n");
        computer.write(u"drm/card0/device/subsystem_device"_s, "0x085a\n");
        computer.write(u"drm/card0-HDMI-A-1/status"_s, "connected\n");
        computer.setDriver(u"card0"_s, u"i915"_s);
        QCOMPARE(words(computer.facts()),
                 QStringList({u"i915"_s, u"Display 630"_s, u"PCI\\VEN_8086&DEV_3E92&SUBSYS_085A1028"_s,
                              u"Example Chips"_s}));
    }

    void ofSeveralTheOneThatTheComputerStartsWith()
    {
        const Computer computer;
        computer.write(u"pci.ids"_s, list);
        computer.addPci(u"card0"_s, "0x8086", "0x3e92", false);
        computer.addPci(u"card1"_s, "0x1002", "0x15dd", true);
        QCOMPARE(words(computer.facts()),
                 QStringList({u"Unknown"_s, u"Picture Maker [Blue]"_s, u"PCI\\VEN_1002&DEV_15DD"_s,
                              u"Example Micro"_s}));
    }

    void ofSeveralWithoutAnyTheFirst()
    {
        const Computer computer;
        computer.addPci(u"card1"_s, "0x1002", "0x15dd", false);
        computer.addPci(u"card0"_s, "0x8086", "0x3e92", false);
        QCOMPARE(computer.facts().hardwareId, u"PCI\\VEN_8086&DEV_3E92"_s);
    }

    void withoutAListTheNumbersAreKnown()
    {
        const Computer computer;
        computer.addPci(u"card0"_s, "0x8086", "0x3e92", true);
        QCOMPARE(words(computer.facts()),
                 QStringList({u"Unknown"_s, u"Unknown"_s, u"PCI\\VEN_8086&DEV_3E92"_s, u"Unknown"_s}));
    }

    void anAdapterOnNoSuchBus()
    {
        const Computer computer;
        computer.write(
            u"drm/card0/device/uevent"_s,
            "DRIVER=vc4-drm\nOF_COMPATIBLE_0=brcm,bcm2711-vc5\nMODALIAS=of:NgpuT(null)Cbrcm,bcm2711-vc5\n");
        computer.setDriver(u"card0"_s, u"vc4-drm"_s);
        QCOMPARE(
            words(computer.facts()),
            QStringList({u"vc4-drm"_s, u"bcm2711-vc5"_s, u"of:NgpuT(null)Cbrcm,bcm2711-vc5"_s, u"brcm"_s}));
    }

    void withoutAnAdapterNothingIsKnown()
    {
        const Computer computer;
        const QStringList unknown(4, u"Unknown"_s);
        QCOMPARE(words(computer.facts()), unknown);
        computer.write(u"drm/version"_s, "drm 1.1.0");
        computer.write(u"drm/renderD128/device/vendor"_s, "0x8086");
        QCOMPARE(words(computer.facts()), unknown);
    }

    void nonsenseIsNotRead()
    {
        const Computer computer;
        computer.addPci(u"card0"_s, "many", "0x123456789", true);
        computer.write(u"drm/card0/device/uevent"_s, QByteArray(100'000, '='));
        QCOMPARE(words(computer.facts()), QStringList(4, u"Unknown"_s));
    }

    void namesInTheList_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::addColumn<QByteArray>("vendor");
        QTest::addColumn<QByteArray>("device");
        QTest::addColumn<QString>("vendorName");
        QTest::addColumn<QString>("deviceName");
        const auto known = [](const char *name) -> QTestData & { return QTest::newRow(name) << list; };
        known("known") << QByteArray("1002") << QByteArray("15dd") << u"Example Micro"_s
                       << u"Picture Maker [Blue]"_s;
        known("a vendor's own device")
            << QByteArray("8086") << QByteArray("15dd") << u"Example Chips"_s << u"Not this one"_s;
        known("a board is no device")
            << QByteArray("8086") << QByteArray("1002") << u"Example Chips"_s << QString();
        known("another vendor's device")
            << QByteArray("1002") << QByteArray("3e92") << u"Example Micro"_s << QString();
        known("no vendor") << QByteArray("ffff") << QByteArray("3e92") << QString() << QString();
        known("nothing asked for") << QByteArray() << QByteArray() << QString() << QString();
        QTest::newRow("empty list") << QByteArray() << QByteArray("8086") << QByteArray("3e92") << QString()
                                    << QString();
        QTest::newRow("cut off") << QByteArray("8086  Example Chips\n\t3e92") << QByteArray("8086")
                                 << QByteArray("3e92") << u"Example Chips"_s << QString();
        QTest::newRow("no names") << QByteArray("8086\n\t3e92\n") << QByteArray("8086") << QByteArray("3e92")
                                  << QString() << QString();
    }
    void namesInTheList()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QByteArray, vendor);
        QFETCH(QByteArray, device);
        const PciNames names = pciNames(contents, vendor, device);
        QTEST(names.vendor, "vendorName");
        QTEST(names.device, "deviceName");
    }
};

QTEST_APPLESS_MAIN(TestDisplayFacts)
#include "TestDisplayFacts.moc"

#include "platform/display/DisplayFacts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace vandrel {

namespace {

// More than any of the system's one-line files has.
constexpr qint64 longestFact = 4096;
// The list of PCI devices has some 1.4 MB.
constexpr qint64 longestList = 16 * 1024 * 1024;
constexpr qsizetype vendorDigits = 4;

QByteArray contents(const QString &path, qint64 most)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
}

QByteArray fact(const QString &path)
{
    return contents(path, longestFact).trimmed();
}

// A hexadecimal number of the system's ("0x8086") as the lists write it ("8086"); empty for anything else.
QByteArray digits(const QByteArray &number)
{
    bool isNumber = false;
    const uint value = number.toUInt(&isNumber, 16);
    return isNumber && value <= 0xffff ? QByteArray::number(value, 16).rightJustified(vendorDigits, '0')
                                       : QByteArray();
}

QString orUnknown(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("Unknown") : text;
}

// The adapters' device folders; connectors ("card0-HDMI-A-1") are no adapters.
QStringList devices(const QString &adapters)
{
    static const QRegularExpression adapter(QStringLiteral("^card[0-9]+$"));
    QStringList folders;
    for (const QString &name : QDir(adapters).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString device = adapters + u'/' + name + QStringLiteral("/device");
        if (adapter.match(name).hasMatch() && QFileInfo(device).isDir())
            folders.append(device);
    }
    return folders;
}

QString primaryDevice(const QString &adapters)
{
    const QStringList folders = devices(adapters);
    for (const QString &folder : folders) {
        if (fact(folder + QStringLiteral("/boot_vga")) == "1")
            return folder;
    }
    return folders.value(0);
}

QByteArray pciList(const QStringList &places)
{
    for (const QString &place : places) {
        const QByteArray list = contents(place, longestList);
        if (!list.isEmpty())
            return list;
    }
    return {};
}

QString pciId(const QString &device, const QByteArray &vendor, const QByteArray &model)
{
    QString id = QStringLiteral("PCI\\VEN_%1&DEV_%2")
                     .arg(QString::fromLatin1(vendor.toUpper()), QString::fromLatin1(model.toUpper()));
    const QByteArray subsystemVendor = digits(fact(device + QStringLiteral("/subsystem_vendor")));
    const QByteArray subsystem = digits(fact(device + QStringLiteral("/subsystem_device")));
    if (!subsystemVendor.isEmpty() && !subsystem.isEmpty())
        id += QStringLiteral("&SUBSYS_%1").arg(QString::fromLatin1((subsystem + subsystemVendor).toUpper()));
    return id;
}

void fillFromPci(DisplayFacts &facts, const QString &device, const QStringList &lists)
{
    const QByteArray vendor = digits(fact(device + QStringLiteral("/vendor")));
    const QByteArray model = digits(fact(device + QStringLiteral("/device")));
    facts.hardwareId = pciId(device, vendor, model);
    const PciNames names = pciNames(pciList(lists), vendor, model);
    facts.description = names.device;
    facts.manufacturer = names.vendor;
}

// An adapter on no such bus names itself by the words of the hardware's description: "maker,model".
void fillFromEvent(DisplayFacts &facts, const QString &device)
{
    for (const QByteArray &line : contents(device + QStringLiteral("/uevent"), longestFact).split('\n')) {
        const QString value = QString::fromUtf8(line.mid(line.indexOf('=') + 1).trimmed());
        if (line.startsWith("OF_COMPATIBLE_0=")) {
            facts.description = value.section(u',', -1);
            facts.manufacturer = value.contains(u',') ? value.section(u',', 0, 0) : QString();
        } else if (line.startsWith("MODALIAS=")) {
            facts.hardwareId = value;
        }
    }
}

} // namespace

DisplayFacts displayFacts(const DisplayFactsPlaces &places)
{
    DisplayFacts facts;
    if (const QString device = primaryDevice(places.adapters); !device.isEmpty()) {
        facts.driver = QFileInfo(QFileInfo(device + QStringLiteral("/driver")).symLinkTarget()).fileName();
        if (!digits(fact(device + QStringLiteral("/vendor"))).isEmpty())
            fillFromPci(facts, device, places.pciNames);
        else
            fillFromEvent(facts, device);
    }
    return {orUnknown(facts.driver), orUnknown(facts.description), orUnknown(facts.hardwareId),
            orUnknown(facts.manufacturer)};
}

DisplayFacts systemDisplayFacts()
{
    return displayFacts({});
}

PciNames pciNames(const QByteArray &list, const QByteArray &vendor, const QByteArray &device)
{
    PciNames names;
    if (vendor.size() != vendorDigits)
        return names;
    for (qsizetype start = 0; start < list.size();) {
        qsizetype end = list.indexOf('\n', start);
        end = end < 0 ? list.size() : end;
        const QByteArrayView line = QByteArrayView(list).sliced(start, end - start);
        start = end + 1;
        const auto nameAfter = [line](qsizetype begin) {
            return QString::fromUtf8(line.sliced(std::min(begin, line.size()))).trimmed();
        };
        if (names.vendor.isEmpty()) {
            if (line.startsWith(vendor))
                names.vendor = nameAfter(vendorDigits);
        } else if (!line.isEmpty() && line.front() != '\t' && line.front() != '#') {
            break;
        } else if (line.size() > 1 + vendorDigits && line.front() == '\t'
                   && line.sliced(1, vendorDigits) == device) {
            names.device = nameAfter(1 + vendorDigits);
            break;
        }
    }
    return names;
}

} // namespace vandrel

#include "platform/sysinfo/LinuxSystemInfo.h"

#include <vector>

#include <pwd.h>
#include <unistd.h>

#include <QGuiApplication>
#include <QScreen>
#include <QSysInfo>

#include "platform/sysinfo/DefaultPrinter.h"
#include "platform/sysinfo/LinuxFacts.h"
#include "platform/sysinfo/LinuxMemory.h"

namespace vandrel {

namespace {

constexpr auto unknown = "Unknown";

QString inMegabytes(qint64 octets)
{
    constexpr qint64 mebi = 1024 * 1024;
    return octets > 0 ? QStringLiteral("%1 MB").arg(octets / mebi) : QString::fromLatin1(unknown);
}

QString firstOf(std::initializer_list<QString> texts)
{
    for (const QString &text : texts) {
        if (!text.isEmpty())
            return text;
    }
    return QString::fromLatin1(unknown);
}

} // namespace

QString LinuxSystemInfo::text(const char *path) const
{
    return kernelText(m_root + QLatin1String(path));
}

QString LinuxSystemInfo::CPUType() const
{
    return firstOf({modelName(kernelFile(m_root + QStringLiteral("/proc/cpuinfo"))),
                    text("/proc/device-tree/model"), QSysInfo::currentCpuArchitecture()});
}

QString LinuxSystemInfo::TotalPhysicalMemory() const
{
    return inMegabytes(ownMemory(m_root).total);
}

QString LinuxSystemInfo::TotalVirtualMemory() const
{
    const MemoryState memory = ownMemory(m_root);
    return inMegabytes(memory.total + memory.swapTotal);
}

QString LinuxSystemInfo::AvailablePhysicalMemory() const
{
    return inMegabytes(ownMemory(m_root).available);
}

QString LinuxSystemInfo::AvailableVirtualMemory() const
{
    const MemoryState memory = ownMemory(m_root);
    return inMegabytes(memory.available + memory.swapFree);
}

QString LinuxSystemInfo::OperatingSystem() const
{
    return QStringLiteral("%1, Linux %2").arg(QSysInfo::prettyProductName(), QSysInfo::kernelVersion());
}

QString LinuxSystemInfo::CurrentDisplay() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!screen)
        return QString::fromLatin1(unknown);
    const QSize pixels = (QSizeF(screen->size()) * screen->devicePixelRatio()).toSize();
    return QStringLiteral("%1 x %2, %3 bit").arg(pixels.width()).arg(pixels.height()).arg(screen->depth());
}

QString LinuxSystemInfo::Printer() const
{
    const QString name = defaultPrinterName();
    return name.isEmpty() ? QStringLiteral("None") : name;
}

bool LinuxSystemInfo::SoundCardPresent() const
{
    return listsSoundCard(kernelFile(m_root + QStringLiteral("/proc/asound/cards")));
}

QString LinuxSystemInfo::ComputerManufacturer() const
{
    // "maker,model" is how a device tree names a board.
    const QString board = text("/proc/device-tree/compatible").section(u',', 0, 0).section(u' ', 0, 0);
    return firstOf({realMaker(text("/sys/class/dmi/id/sys_vendor")),
                    realMaker(text("/sys/class/dmi/id/board_vendor")), realMaker(board),
                    realMaker(text("/sys/hypervisor/type"))});
}

QString LinuxSystemInfo::ComputerName() const
{
    return firstOf({QSysInfo::machineHostName()});
}

QString LinuxSystemInfo::User() const
{
    constexpr std::size_t room = 16'384;
    std::vector<char> strings(room);
    passwd entry{};
    passwd *found = nullptr;
    const uid_t number = getuid();
    if (getpwuid_r(number, &entry, strings.data(), strings.size(), &found) == 0 && found)
        return QString::fromLocal8Bit(entry.pw_name);
    return QString::number(number);
}

QString LinuxSystemInfo::Company() const
{
    return {};
}

} // namespace vandrel

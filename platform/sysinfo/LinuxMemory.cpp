#include "platform/sysinfo/LinuxMemory.h"

#include <algorithm>
#include <optional>

#include <QHash>

#include "platform/sysinfo/LinuxFacts.h"

namespace vandrel {

namespace {

constexpr qint64 kibi = 1024;

/// The files of one kind of control group.
struct GroupFiles {
    QString folder;
    const char *limit;
    const char *used;
    const char *reclaimable;
};

// "Name: 123 kB" or "name 123", a line each.
QHash<QByteArray, qint64> numbersOf(const QByteArray &text)
{
    QHash<QByteArray, qint64> numbers;
    for (const QByteArray &line : text.split('\n')) {
        const QByteArrayList words = line.simplified().split(' ');
        bool isNumber = false;
        const qint64 number = words.value(1).toLongLong(&isNumber);
        if (isNumber && number >= 0)
            numbers.insert(words.first().endsWith(':') ? words.first().chopped(1) : words.first(), number);
    }
    return numbers;
}

// A group without a limit says "max", or a number beyond any memory.
std::optional<qint64> numberIn(const QString &file)
{
    bool isNumber = false;
    const qint64 number = kernelFile(file).trimmed().toLongLong(&isNumber);
    return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

// The group's path below its hierarchy, from the lines "number:controllers:path" of /proc/self/cgroup (cgroups(7)).
std::optional<QString> groupPath(const QByteArray &groups, const QByteArray &controller)
{
    for (const QByteArray &line : groups.split('\n')) {
        const qsizetype second = line.indexOf(':', line.indexOf(':') + 1);
        if (second < 0)
            continue;
        const QByteArrayList controllers = line.left(second).mid(line.indexOf(':') + 1).split(',');
        if (controllers.contains(controller))
            return QString::fromUtf8(line.mid(second + 1));
    }
    return {};
}

void applyLimit(MemoryState &memory, const QString &folder, const GroupFiles &files)
{
    const auto limit = numberIn(folder + QLatin1String(files.limit));
    if (!limit)
        return;
    memory.total = std::min(memory.total, *limit);
    const qint64 used = numberIn(folder + QLatin1String(files.used)).value_or(0);
    const qint64 reclaimable
        = numbersOf(kernelFile(folder + QStringLiteral("/memory.stat"))).value(files.reclaimable);
    memory.available = std::clamp<qint64>(*limit - used + reclaimable, 0, std::min(memory.available, *limit));
}

// Every group above has its own limit. Inside a container the path may be one that only its host sees.
void applyLimits(MemoryState &memory, QString path, const GroupFiles &files)
{
    for (;;) {
        applyLimit(memory, files.folder + path, files);
        const qsizetype slash = path.lastIndexOf(u'/');
        if (slash < 0)
            return;
        path.truncate(slash);
    }
}

} // namespace

MemoryState machineMemory(const QByteArray &memInfo)
{
    const QHash<QByteArray, qint64> numbers = numbersOf(memInfo);
    const qint64 givenUp = numbers.value("MemFree") + numbers.value("Buffers") + numbers.value("Cached");
    MemoryState memory;
    memory.total = numbers.value("MemTotal") * kibi;
    memory.available = std::min(memory.total, numbers.value("MemAvailable", givenUp) * kibi);
    memory.swapTotal = numbers.value("SwapTotal") * kibi;
    memory.swapFree = std::min(memory.swapTotal, numbers.value("SwapFree") * kibi);
    return memory;
}

MemoryState ownMemory(const QString &root)
{
    MemoryState memory = machineMemory(kernelFile(root + QStringLiteral("/proc/meminfo")));
    const QByteArray groups = kernelFile(root + QStringLiteral("/proc/self/cgroup"));
    if (const auto path = groupPath(groups, "memory"))
        applyLimits(memory, *path,
                    {root + QStringLiteral("/sys/fs/cgroup/memory"), "/memory.limit_in_bytes",
                     "/memory.usage_in_bytes", "total_inactive_file"});
    if (const auto path = groupPath(groups, ""))
        applyLimits(
            memory, *path,
            {root + QStringLiteral("/sys/fs/cgroup"), "/memory.max", "/memory.current", "inactive_file"});
    return memory;
}

} // namespace vandrel

#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// Memory in octets.
struct MemoryState {
    qint64 total = 0;
    qint64 available = 0;
    qint64 swapTotal = 0;
    qint64 swapFree = 0;
};

/// What /proc/meminfo says (proc(5)). Where an old kernel does not say what is available, free memory and the buffers
/// and pages that can be given up are counted.
MemoryState machineMemory(const QByteArray &memInfo);

/// The machine's memory within the limits of the control groups that this process is in (Linux, cgroup v1 and v2), so
/// that a container is not credited with what only its host has. `root` is the folder that /proc and /sys are in.
MemoryState ownMemory(const QString &root);

} // namespace vandrel

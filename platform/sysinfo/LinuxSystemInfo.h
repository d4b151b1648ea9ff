#pragma once

#include <utility>

#include "controls/bLSSystemInfo.h"

namespace vandrel {

/// The facts of a Linux system, from /proc and /sys and what the toolkit knows; an ordinary user may read them all, and
/// virtual machines and containers without a firmware of their own have what can be known there.
class LinuxSystemInfo final : public bLSSystemInfo
{
public:
    /// `root` is the folder that /proc, /sys and /etc are in; "" is the running system.
    explicit LinuxSystemInfo(QString root = {}) : m_root(std::move(root)) { }

    QString CPUType() const override;
    QString TotalPhysicalMemory() const override;
    QString TotalVirtualMemory() const override;
    QString AvailablePhysicalMemory() const override;
    QString AvailableVirtualMemory() const override;
    QString OperatingSystem() const override;
    QString CurrentDisplay() const override;
    QString Printer() const override;
    bool SoundCardPresent() const override;
    QString ComputerManufacturer() const override;
    QString ComputerName() const override;
    QString User() const override;
    QString Company() const override;

private:
    QString text(const char *path) const;

    QString m_root;
};

} // namespace vandrel

#pragma once

#include <QStringList>

#include "controls/bLSSystemInfo.h"

namespace vandrel::test {

/// A computer whose facts are their own names, and which notes what it is asked, in order.
class FakeSystemInfo final : public bLSSystemInfo
{
public:
    /// `asked` receives the names; it outlives this object.
    explicit FakeSystemInfo(QStringList &asked) : m_asked(asked) { }

    bool hasSoundCard = true;

    QString CPUType() const override { return note("CPUType"); }
    QString TotalPhysicalMemory() const override { return note("TotalPhysicalMemory"); }
    QString TotalVirtualMemory() const override { return note("TotalVirtualMemory"); }
    QString AvailablePhysicalMemory() const override { return note("AvailablePhysicalMemory"); }
    QString AvailableVirtualMemory() const override { return note("AvailableVirtualMemory"); }
    QString OperatingSystem() const override { return note("OperatingSystem"); }
    QString CurrentDisplay() const override { return note("CurrentDisplay"); }
    QString Printer() const override { return note("Printer"); }
    bool SoundCardPresent() const override
    {
        note("SoundCardPresent");
        return hasSoundCard;
    }
    QString ComputerManufacturer() const override { return note("ComputerManufacturer"); }
    QString ComputerName() const override { return note("ComputerName"); }
    QString User() const override { return note("User"); }
    QString Company() const override { return note("Company"); }

private:
    QString note(const char *fact) const
    {
        m_asked.append(QString::fromLatin1(fact));
        return m_asked.last();
    }

    QStringList &m_asked;
};

} // namespace vandrel::test

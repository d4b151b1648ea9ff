#pragma once

#include <QString>

namespace vandrel {

/// Facts about the computer and its user, each found out when it is asked for and worded for the user, units included.
/// A fact that cannot be found out is "Unknown" or empty, never made up. User-interface thread only; no fact takes
/// longer than about a second.
class bLSSystemInfo
{
public:
    virtual ~bLSSystemInfo() = default;

    /// The processor's name, as its maker words it.
    virtual QString CPUType() const = 0;
    /// Memory that the computer, or the container that this program runs in, has: "24105 MB" (of 1,048,576 octets).
    virtual QString TotalPhysicalMemory() const = 0;
    /// Memory and swap space together.
    virtual QString TotalVirtualMemory() const = 0;
    /// Memory that programs can still have without swapping.
    virtual QString AvailablePhysicalMemory() const = 0;
    virtual QString AvailableVirtualMemory() const = 0;
    /// Name and version.
    virtual QString OperatingSystem() const = 0;
    /// The primary screen's mode: "1920 x 1080, 24 bit", in device pixels.
    virtual QString CurrentDisplay() const = 0;
    /// The default printer's name; "None" when there is none.
    virtual QString Printer() const = 0;
    virtual bool SoundCardPresent() const = 0;
    virtual QString ComputerManufacturer() const = 0;
    virtual QString ComputerName() const = 0;
    /// The name that the user logs in with.
    virtual QString User() const = 0;
    /// The organisation that the system is registered to; empty where systems are not registered.
    virtual QString Company() const = 0;
};

} // namespace vandrel

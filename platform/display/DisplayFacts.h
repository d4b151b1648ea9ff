#pragma once

#include <functional>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vandrel {

/// What is known of the display adapter; "Unknown" stands for what is not.
struct DisplayFacts {
    QString driver;
    QString description;
    QString hardwareId;
    QString manufacturer;
};

using DisplayFactsReader = std::function<DisplayFacts()>;

/// Where the facts are read.
struct DisplayFactsPlaces {
    /// The system's folder of display adapters.
    QString adapters = QStringLiteral("/sys/class/drm");
    /// The names behind the numbers of PCI devices; the first file that is there.
    QStringList pciNames{QStringLiteral("/usr/share/misc/pci.ids"),
                         QStringLiteral("/usr/share/hwdata/pci.ids")};
};

/// The facts of the adapter that the computer starts with, or else of the first.
DisplayFacts displayFacts(const DisplayFactsPlaces &places);
/// Those of this computer.
DisplayFacts systemDisplayFacts();

/// The names of a PCI device.
struct PciNames {
    QString vendor;
    QString device;
};

/// Looks a device up in the list of PCI devices (pci.ids): vendors are lines of four digits and a name, the devices of a
/// vendor follow it, indented by one tab. Numbers are four hexadecimal digits in small letters. A name that the list does
/// not have is empty.
PciNames pciNames(const QByteArray &list, const QByteArray &vendor, const QByteArray &device);

} // namespace vandrel

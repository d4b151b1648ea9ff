#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

/// Tells facts of the display adapter, and changes the resolution of the primary monitor. User-interface thread only;
/// raises no events.
///
/// Both triggers are synchronous: when the assignment returns their results can be read. Other monitors keep their
/// resolution and the place of their pictures. Nothing is ever stored: the desktop's own settings are in force again at
/// the next login.
class ChangeRes : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// True reads the facts, and the resolution in force into width and height; false does nothing. A fact that the
    /// system does not know is "Unknown"; width and height are 0 where no monitor is on.
    virtual void setRead(bool start) = 0;
    /// True makes width and height the primary monitor's resolution; false does nothing. Only a resolution that the
    /// monitor itself offers is applied, at its highest frequency. A change that is refused, or fails half-way, leaves
    /// the resolution that was in force, which width and height tell then.
    virtual void setApply(bool start) = 0;
    /// True when the last change failed.
    virtual bool Failed() const = 0;

    virtual QString DeviceDescription() const = 0;
    virtual QString DisplayDriver() const = 0;
    virtual QString HardwareID() const = 0;
    virtual QString Manufacturer() const = 0;

    /// In pixels of the monitor.
    virtual qint32 Width() const = 0;
    virtual void setWidth(qint32 pixels) = 0;
    virtual qint32 Height() const = 0;
    virtual void setHeight(qint32 pixels) = 0;
};

} // namespace vandrel

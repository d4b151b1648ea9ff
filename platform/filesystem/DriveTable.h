#pragma once

#include <memory>

#include <QObject>

#include "controls/DriveView.h"

namespace vandrel {

/// Keeps a drive view in step with the system: "c:" is the home folder and "z:" the root from the start, "d:" to
/// "y:" are the removable and network mounts once follow() was called. User-interface thread only.
class DriveTable : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The table of this system for `view`, which outlives it. Touches nothing outside the process.
    static std::unique_ptr<DriveTable> create(DriveView &view);

    /// Enters the mounts there are now, and from then on every change. Calling it again does nothing.
    virtual void follow() = 0;

Q_SIGNALS:
    /// A drive came or went.
    void changed();
};

} // namespace vandrel

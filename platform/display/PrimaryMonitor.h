#pragma once

#include <memory>

#include <QSize>

namespace vandrel {

/// A way to see and to change the primary monitor's resolution. Each call takes as long as the desktop does, which is
/// the program that shows every window.
class PrimaryMonitor
{
public:
    virtual ~PrimaryMonitor() = default;

    /// The resolution in force, in the monitor's own pixels; empty where no monitor is on or nobody tells.
    virtual QSize resolution() = 0;

    /// Makes that the resolution, at the highest frequency that the monitor offers for it. False where it does not
    /// offer it or the change failed; what was in force before is in force then.
    virtual bool change(const QSize &wanted) = 0;

    /// The way that fits the desktop that the program runs on.
    static std::unique_ptr<PrimaryMonitor> ofDesktop();
};

} // namespace vandrel

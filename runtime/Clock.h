#pragma once

#include <QDateTime>

namespace vandrel {

/// The current local date and time. A test can set the clock; the suite asks nothing else for the time of day.
class Clock
{
public:
    static QDateTime now();

    /// Makes now() return `moment` until reset; for tests.
    static void set(const QDateTime &moment);
    static void reset();
};

} // namespace vandrel

#include "controls/Timer.h"

#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

Timer::Timer(QObject *parent) : QObject(parent)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    onEvent(&m_timer, &QTimer::timeout, this, &Timer::Elapsed);
}

void Timer::setInterval(int milliseconds)
{
    if (milliseconds < 0 || milliseconds > LongestInterval)
        throw RuntimeError(error::InvalidPropertyValue);
    m_interval = milliseconds;
    apply();
}

void Timer::setEnabled(bool enabled)
{
    if (enabled == m_isEnabled)
        return;
    m_isEnabled = enabled;
    apply();
}

void Timer::apply()
{
    if (m_isEnabled && m_interval > 0)
        m_timer.start(m_interval);
    else
        m_timer.stop();
}

} // namespace vandrel

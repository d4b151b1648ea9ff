#include "platform/display/SystemDisplay.h"

#include <utility>

namespace vandrel {

SystemDisplay::SystemDisplay(std::unique_ptr<PrimaryMonitor> monitor, DisplayFactsReader readFacts)
    : m_monitor(std::move(monitor)), m_readFacts(std::move(readFacts))
{ }

void SystemDisplay::setRead(bool start)
{
    if (!start)
        return;
    m_facts = m_readFacts();
    readResolution();
}

void SystemDisplay::setApply(bool start)
{
    if (!start)
        return;
    m_failed = m_width <= 0 || m_height <= 0 || !m_monitor->change({m_width, m_height});
    if (m_failed)
        readResolution();
}

void SystemDisplay::readResolution()
{
    const QSize size = m_monitor->resolution();
    m_width = size.isEmpty() ? 0 : size.width();
    m_height = size.isEmpty() ? 0 : size.height();
}

} // namespace vandrel

#include "launcher/ToolSlots.h"

#include <utility>

#include "runtime/RuntimeError.h"

namespace vandrel {

void ToolSlots::setFactory(const QString &name, WindowSlot::Factory factory)
{
    m_slots.try_emplace(name, WindowSlot(std::move(factory)));
}

bool ToolSlots::has(const QString &name) const
{
    return m_slots.contains(name);
}

WindowSlot &ToolSlots::operator[](const QString &name)
{
    const auto found = m_slots.find(name);
    if (found == m_slots.end())
        throw RuntimeError(error::ObjectNotSet);
    return found->second;
}

} // namespace vandrel

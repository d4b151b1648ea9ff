#pragma once

#include <map>

#include <QString>

#include "runtime/WindowSlot.h"

namespace vandrel {

/// One reference per tool window, by the window's name ("frmText"). The composition root fills in how each
/// tool is made; a tool without that is not part of this build, and its menu item is disabled.
class ToolSlots
{
public:
    /// Says how the window of that name is made.
    void setFactory(const QString &name, WindowSlot::Factory factory);

    /// Whether the tool can be made.
    bool has(const QString &name) const;

    /// The tool's reference; Object variable not set (91) for one that cannot be made.
    WindowSlot &operator[](const QString &name);

private:
    std::map<QString, WindowSlot> m_slots;
};

} // namespace vandrel

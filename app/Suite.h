#pragma once

#include <memory>

#include <QDir>

#include "app/SharedAdapters.h"
#include "app/ToolModules.h"
#include "launcher/ToolSlots.h"
#include "runtime/WindowSlot.h"

namespace vandrel {

/// The whole suite put together: which adapter serves which control, and how each window is made. Nothing is looked
/// up before a tool asks for it, so that the first window is there at once. User-interface thread only.
class Suite
{
public:
    /// A suite whose modules lie in that folder.
    explicit Suite(const QDir &modules = ToolModules::ownFolder());

    /// The about box, the first window.
    WindowSlot &about() { return m_about; }
    /// The launcher.
    WindowSlot &launcher() { return m_launcher; }
    /// The tools, by their windows' names.
    ToolSlots &tools() { return m_tools; }
    /// The window that the picture viewer opens.
    WindowSlot &thumbnails() { return m_thumbnails; }

private:
    void addTools(const QString &module, const QStringList &windows);
    QWidget *makeTool(const QString &module, const QString &window);

    ToolModules m_modules;
    std::unique_ptr<SharedAdapters> m_adapters;
    ToolSlots m_tools;
    WindowSlot m_thumbnails;
    WindowSlot m_launcher;
    WindowSlot m_about;
};

} // namespace vandrel

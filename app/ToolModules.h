#pragma once

#include <QDir>

#include "app/SharedAdapters.h"
#include "app/ToolModule.h"

namespace vandrel {

/// Finds the program's modules and loads each when it is first asked for; a loaded module stays until the program
/// ends, since a window's code cannot go before the window.
class ToolModules
{
public:
    /// Looks for the modules in `folder`.
    explicit ToolModules(const QDir &folder) : m_folder(folder) { }

    /// The folder of the suite's own libraries, as it was built or installed with the running program.
    static QDir ownFolder();

    /// The module of that name ("internet"). Raises error 429 with the file's name and the reason where it cannot be
    /// loaded.
    ToolModule &load(const QString &name) const;

    /// The adapters that all tools share, from the module that has them. Raises what load() raises.
    std::unique_ptr<SharedAdapters> loadAdapters() const;

private:
    QString fileOf(const QString &name) const;

    QDir m_folder;
};

} // namespace vandrel

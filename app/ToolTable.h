#pragma once

#include <map>

#include <QString>

#include "app/ToolServices.h"
#include "runtime/RuntimeError.h"

class QWidget;

namespace vandrel {

/// How each tool window of a module is made, by the window's name.
using ToolTable = std::map<QString, QWidget *(*)(const ToolServices &)>;

/// Makes a window of the table. Raises Object required (424) for a name that it does not have.
inline QWidget *makeTool(const ToolTable &table, const QString &window, const ToolServices &services)
{
    const auto found = table.find(window);
    if (found == table.end())
        throw RuntimeError(error::ObjectRequired);
    return found->second(services);
}

} // namespace vandrel

#pragma once

#include <map>
#include <utility>

#include <QString>

#include "app/ToolModule.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

/// How each tool window of a module is made, by the window's name.
using ToolTable = std::map<QString, QWidget *(*)(const ToolServices &)>;

/// A module that makes its windows by a table.
class TableModule : public ToolModule
{
public:
    explicit TableModule(ToolTable tools) : m_tools(std::move(tools)) { }

    QWidget *make(const QString &window, const ToolServices &services) override
    {
        const auto found = m_tools.find(window);
        if (found == m_tools.end())
            throw RuntimeError(error::ObjectRequired);
        return found->second(services);
    }

private:
    const ToolTable m_tools;
};

} // namespace vandrel

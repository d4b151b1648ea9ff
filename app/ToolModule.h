#pragma once

#include <QtPlugin>

#include "app/ToolServices.h"

class QWidget;

namespace vandrel {

/// A family of tools that is loaded when the first of its windows is opened, so that neither its code nor the
/// libraries it stands on take time or memory at the program's start. Implemented by the root object of a plug-in
/// in the program's own library folder.
class ToolModule
{
public:
    virtual ~ToolModule() = default;

    /// Makes the tool window of that name ("frmPOP") with its adapters, without a parent. Raises Object required
    /// (424) for a name that the module does not have.
    virtual QWidget *make(const QString &window, const ToolServices &services) = 0;
};

} // namespace vandrel

Q_DECLARE_INTERFACE(vandrel::ToolModule, "io.github.vandrel.ToolModule/1.0")

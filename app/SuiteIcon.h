#pragma once

#include <QIcon>

namespace vandrel {

/// The suite's icon, from the resources that are built in.
QIcon suiteIcon();

} // namespace vandrel

#pragma once

#include <QIcon>

namespace vandrel {

/// The suite's icon in the sizes that window managers take, from the resources that are built in.
QIcon suiteIcon();

} // namespace vandrel

#pragma once

#include <QStringList>

namespace vandrel {

/// Names in the order in which lists show them: without regard to case, and where only the case differs by
/// character. Made for a hundred thousand of them.
QStringList sortedNames(const QStringList &names);

} // namespace vandrel

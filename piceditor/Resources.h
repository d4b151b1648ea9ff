#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// A file that is built into the picture editor: "open.svg". Raises File not found (53) for one that is not.
QByteArray picEditorResource(const QString &name);

} // namespace vandrel

#pragma once

#include <QString>
#include <QStringList>

namespace vandrel {

/// The paths of a list in which each full path is followed by ";"; the last ";" may be missing.
///
/// A name may itself contain ";": a full path begins with a drive ("c:") or with "/", so what follows a ";"
/// and begins with neither still belongs to the path before. A DOS-style name never contains ":" or "/", so
/// every list of such paths is read as it was meant; only a native path ("/...") with a folder whose name
/// ends in ";" is read as two.
QStringList attachmentPaths(const QString &list);

} // namespace vandrel

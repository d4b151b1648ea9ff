#pragma once

#include <QString>

namespace vandrel {

/// A new folder for what one browser's box keeps of the pages, which only this user can read. Before the engine's first
/// profile, or after. Raises Path/File access error (75) where none can be made.
QString newPageFolder();

/// Removes such a folder in the background, once the engine writes nothing more into it; at the program's end at the
/// latest.
void removePageFolder(const QString &folder);

} // namespace vandrel

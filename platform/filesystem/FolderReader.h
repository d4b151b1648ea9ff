#pragma once

#include <QByteArray>
#include <QByteArrayList>

#include "controls/LocalFolders.h"

namespace vandrel {

struct FolderNames {
    QByteArrayList names;
    /// The system's error number (errno); 0 when the folder was read to its end.
    int failure = 0;
};

/// The names of one kind in a folder, hidden ones (with a dot before them) left out. A link counts as what it leads
/// to, one that leads nowhere as a file; pipes, sockets and devices are neither. Blocks as long as the file system
/// does; usable on any thread.
FolderNames readFolder(const QByteArray &nativeFolder, EntryKind kind);

} // namespace vandrel

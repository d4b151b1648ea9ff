#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QFutureWatcher>
#include <QTimer>

#include "controls/LocalFolders.h"

namespace vandrel {

/// Watches a folder of this system. It is read on a thread of its own: where its file system does not answer, nothing
/// more is heard of it, and nobody waits. A folder whose path is no text in the system's encoding is not watched.
class NativeFolderWatch final : public FolderWatch
{
    Q_OBJECT

public:
    /// `folders` tells of drives that come and go; it outlives this.
    NativeFolderWatch(const LocalFolders &folders, QString dosFolder, EntryKind kind);

private:
    void arm();
    void note();
    void read();
    void tell();

    const LocalFolders &m_folders;
    QString m_dosFolder;
    EntryKind m_kind;
    QFileSystemWatcher m_system;
    QFutureWatcher<QStringList> m_reader;
    QElapsedTimer m_reading;
    /// Runs from a change to the reading, and from a reading until there may be another.
    QTimer m_pause;
    bool m_hasChanged = false;
};

} // namespace vandrel

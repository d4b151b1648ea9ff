#pragma once

#include <optional>
#include <vector>

#include <QString>
#include <QStringList>

#include "runtime/RuntimeError.h"

class QWidget;

namespace vandrel {

/// How a batch of file operations ended.
struct FileBatchResult {
    /// How many files were done, in order; so it is also the index of the one at which the batch ended early.
    int done = 0;
    /// Why it ended early, unless the user cancelled it.
    std::optional<RuntimeError> failure;
    bool isCancelled = false;
};

/// The language's own file operations: the current folder, copying and deleting. Paths are DOS-style, relative ones
/// are taken from the current folder of their drive. The implementation lives in platform/filesystem. User-interface
/// thread only.
///
/// Copying and deleting take a whole batch, do it in order and return when it has ended. Meanwhile the windows go on
/// painting but take no input, and the events of controls wait; after half a second a box tells how far it has come and
/// offers to cancel.
class FileOperations
{
public:
    struct Copy {
        QString source;
        QString destination;
    };

    virtual ~FileOperations() = default;

    /// The current folder of the current drive, as a full path.
    virtual QString CurDir() const = 0;
    /// Makes a folder the current one of its drive; the current drive stays. Raises what DriveView::setCurrentFolder()
    /// raises.
    virtual void ChDir(const QString &folder) = 0;

    /// Copies files until one fails. What a link leads to is copied; an existing destination is replaced once its copy
    /// is complete and stays as it was otherwise; times and permissions are kept. A file copied onto itself fails with
    /// Permission denied (70). `owner` is the window that asks.
    virtual FileBatchResult FileCopy(const std::vector<Copy> &files, QWidget &owner) = 0;
    /// Deletes files until one fails; of a link, the link alone.
    virtual FileBatchResult Kill(const QStringList &files, QWidget &owner) = 0;
};

} // namespace vandrel

#pragma once

#include <functional>

#include <QString>

#include "controls/FileOperations.h"

namespace vandrel {

/// Told how far a file has come, in octets of its size (0 where that is not known); false stops the batch.
using FileProgress = std::function<bool(qint64 done, qint64 size)>;

/// File operations that are done one after the other on a thread of their own while the caller waits for them.
struct FileBatch {
    /// The title of the box that tells the progress, and what it says: %1 is the number of the file, %2 that of all.
    QString title;
    QString text;
    /// The names of the files, for the box.
    QStringList names;
    /// Does the file with that index. Returns false when it was stopped; raises RuntimeError. Runs on the batch's
    /// thread, and may outlive the wait when a file system never answers and the user cancels.
    std::function<bool(int index, const FileProgress &goOn)> step;
    /// Called after the last step, however the batch has ended, on the batch's thread; may be empty.
    std::function<void()> end;
};

/// Runs the batch and waits for its end: see FileOperations. User-interface thread only.
FileBatchResult runBatch(const FileBatch &batch, QWidget &owner);

} // namespace vandrel

#pragma once

#include <dirent.h>

#include <memory>

namespace vandrel {

/// Closes a folder that was opened for reading.
struct PosixFolderCloser {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

/// A folder open for reading, closed with its holder.
using PosixFolder = std::unique_ptr<DIR, PosixFolderCloser>;

} // namespace vandrel

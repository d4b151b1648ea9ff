#include "platform/filesystem/FolderReader.h"

#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/filesystem/PosixFolder.h"

namespace vandrel {

namespace {

bool isMode(mode_t mode, EntryKind kind)
{
    return kind == EntryKind::Folders ? S_ISDIR(mode) : S_ISREG(mode);
}

// Only what the folder itself does not tell costs a look at the entry.
bool isOfKind(DIR *folder, const dirent &entry, EntryKind kind)
{
    if (entry.d_type == DT_DIR)
        return kind == EntryKind::Folders;
    if (entry.d_type == DT_REG)
        return kind == EntryKind::Files;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return false;
    struct stat found = {};
    if (::fstatat(::dirfd(folder), entry.d_name, &found, 0) != 0)
        return kind == EntryKind::Files;
    return isMode(found.st_mode, kind);
}

} // namespace

FolderNames readFolder(const QByteArray &nativeFolder, EntryKind kind)
{
    FolderNames found;
    const PosixFolder folder(::opendir(nativeFolder.constData()));
    if (!folder) {
        found.failure = errno;
        return found;
    }
    errno = 0;
    while (const dirent *entry = ::readdir(folder.get())) {
        if (entry->d_name[0] != '.' && isOfKind(folder.get(), *entry, kind))
            found.names.append(QByteArray(static_cast<const char *>(entry->d_name)));
        errno = 0;
    }
    found.failure = errno;
    return found;
}

} // namespace vandrel

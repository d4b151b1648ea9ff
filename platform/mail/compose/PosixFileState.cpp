#include "platform/mail/compose/FileState.h"

#include <sys/stat.h>

#include <QFile>

namespace vandrel {

std::optional<FileState> fileState(const QFile &file)
{
    struct stat found = {};
    if (::fstat(file.handle(), &found) != 0 || found.st_nlink == 0)
        return {};
    return FileState{found.st_size, found.st_mtim.tv_sec * 1'000'000'000LL + found.st_mtim.tv_nsec,
                     found.st_dev, found.st_ino};
}

} // namespace vandrel

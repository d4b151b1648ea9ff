#include "platform/filesystem/SystemFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace vandrel {

namespace {

struct Row {
    int code;
    int number;
    const char16_t *advice;
};

constexpr auto freeSpace = u"Free some space, or choose another drive.";
constexpr auto checkRights = u"Check the rights of the file and of its folder, or choose another place.";
constexpr auto checkDisk = u"Check the disk or the network connection, or choose another place.";
constexpr auto choosePlainFile = u"Choose a plain file.";
constexpr auto chooseName = u"Choose another name.";

constexpr std::array rows{
    Row{ENOSPC, error::DiskFull, freeSpace},
    Row{EDQUOT, error::DiskFull, freeSpace},
    Row{EFBIG, error::DiskFull,
        u"The file is larger than its file system or your limits allow; choose another drive."},
    Row{EACCES, error::PermissionDenied, checkRights},
    Row{EPERM, error::PermissionDenied, checkRights},
    Row{EROFS, error::PermissionDenied, u"The drive can only be read; choose another drive."},
    Row{ETXTBSY, error::PermissionDenied, u"The file is a running program; choose another name."},
    Row{EISDIR, error::PathFileAccess, choosePlainFile},
    Row{ENODEV, error::PathFileAccess, choosePlainFile},
    Row{ENXIO, error::PathFileAccess, choosePlainFile},
    Row{ELOOP, error::PathFileAccess, u"Its links lead in a circle; choose another file."},
    Row{EBUSY, error::PathFileAccess, u"Another program is using it; close that program and try again."},
    Row{EMFILE, error::PathFileAccess, u"Too many files are open; close some windows and try again."},
    Row{ENFILE, error::PathFileAccess, u"Too many files are open; close some programs and try again."},
    Row{ENOTDIR, error::PathNotFound, u"Choose an existing folder."},
    Row{ENAMETOOLONG, error::BadFileName, u"The name is too long; choose a shorter one."},
    Row{EINVAL, error::BadFileName, chooseName},
    Row{EILSEQ, error::BadFileName, chooseName},
    Row{ESTALE, error::DiskNotReady, checkDisk},
    Row{ENOTCONN, error::DiskNotReady, checkDisk},
    Row{EHOSTDOWN, error::DiskNotReady, checkDisk},
    Row{ETIMEDOUT, error::DiskNotReady, checkDisk},
    Row{ENOMEM, error::OutOfMemory, u"Close some windows and try again."},
};

// A missing name means the folder when writing, and else the file.
Row missing(FileAction action)
{
    if (action == FileAction::Writing)
        return {ENOENT, error::PathNotFound, u"Choose an existing folder."};
    return {ENOENT, error::FileNotFound, u"Check its name and its folder."};
}

Row rowOf(int code, FileAction action)
{
    if (code == ENOENT)
        return missing(action);
    const auto found
        = std::find_if(rows.begin(), rows.end(), [code](const Row &row) { return row.code == code; });
    return found != rows.end() ? *found : Row{code, error::DeviceIoError, checkDisk};
}

QString attemptOf(FileAction action)
{
    switch (action) {
    case FileAction::Reading:
        return QStringLiteral("\"%1\" could not be read.");
    case FileAction::Deleting:
        return QStringLiteral("\"%1\" could not be deleted.");
    case FileAction::Writing:
        break;
    }
    return QStringLiteral("\"%1\" could not be written, and what was saved there before is unchanged.");
}

} // namespace

RuntimeError systemFailure(int code, FileAction action, const QString &shownName)
{
    const Row row = rowOf(code, action);
    return RuntimeError(row.number,
                        QStringLiteral("%1. %2 %3")
                            .arg(runtimeErrorText(row.number), attemptOf(action).arg(shownName),
                                 QString::fromUtf16(row.advice)));
}

} // namespace vandrel

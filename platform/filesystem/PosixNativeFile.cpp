#include "platform/filesystem/NativeFile.h"

#include <cerrno>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/filesystem/PosixFolder.h"
#include "platform/filesystem/SystemFailure.h"

namespace vandrel {

namespace {

bool exists(const QByteArray &path)
{
    struct stat found = {};
    return ::lstat(path.constData(), &found) == 0;
}

// The only name in the folder that equals `name` when the case of letters is ignored.
std::optional<QByteArray> caseBlindMatch(const QByteArray &folderPath, const QByteArray &name)
{
    const PosixFolder folder(::opendir(folderPath.isEmpty() ? "/" : folderPath.constData()));
    if (!folder)
        return {};
    const QString wanted = QString::fromUtf8(name).toCaseFolded();
    std::optional<QByteArray> match;
    while (const dirent *entry = ::readdir(folder.get())) {
        const QByteArray candidate(static_cast<const char *>(entry->d_name));
        if (QString::fromUtf8(candidate).toCaseFolded() != wanted)
            continue;
        if (match)
            return {};
        match = candidate;
    }
    return match;
}

// The path as it exists, each name exactly or else in its only other spelling.
std::optional<QByteArray> existingSpelling(const QByteArray &path)
{
    QByteArray spelled;
    for (const QByteArray &name : path.split('/')) {
        if (name.isEmpty())
            continue;
        const QByteArray exact = spelled + '/' + name;
        if (exists(exact)) {
            spelled = exact;
            continue;
        }
        const auto match = caseBlindMatch(spelled, name);
        if (!match)
            return {};
        spelled += '/' + *match;
    }
    return spelled;
}

// Without O_NONBLOCK, opening a pipe that nobody writes to would never return.
int openDescriptor(const QByteArray &path)
{
    int file = -1;
    do {
        file = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    } while (file < 0 && errno == EINTR);
    return file;
}

int openInAnyCase(const QByteArray &path)
{
    const int file = openDescriptor(path);
    if (file >= 0 || errno != ENOENT)
        return file;
    const auto spelled = existingSpelling(path);
    if (spelled && *spelled != path)
        return openDescriptor(*spelled);
    errno = ENOENT;
    return -1;
}

bool folderIsMissing(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash > 0 && !existingSpelling(path.left(slash));
}

// Why a descriptor cannot be read like a file; 0 when it can.
int reasonNotToRead(int file)
{
    struct stat found = {};
    if (::fstat(file, &found) != 0)
        return errno;
    if (S_ISDIR(found.st_mode))
        return EISDIR;
    return S_ISREG(found.st_mode) ? 0 : ENODEV;
}

} // namespace

int openDescriptorForReading(const QByteArray &nativePath, const QString &shownName)
{
    const int descriptor = openInAnyCase(nativePath);
    if (descriptor < 0) {
        const int code = errno;
        const bool noFolder = code == ENOENT && folderIsMissing(nativePath);
        throw systemFailure(noFolder ? ENOTDIR : code, FileAction::Reading, shownName);
    }
    if (const int reason = reasonNotToRead(descriptor)) {
        ::close(descriptor);
        throw systemFailure(reason, FileAction::Reading, shownName);
    }
    return descriptor;
}

std::unique_ptr<QFile> openForReading(const QByteArray &nativePath, const QString &shownName)
{
    const int descriptor = openDescriptorForReading(nativePath, shownName);
    auto file = std::make_unique<QFile>();
    if (!file->open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(descriptor);
        throw systemFailure(EIO, FileAction::Reading, shownName);
    }
    return file;
}

} // namespace vandrel

#include "platform/filesystem/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/filesystem/PosixReplacement.h"
#include "platform/filesystem/SystemFailure.h"

namespace vandrel {

namespace {

constexpr qsizetype bufferSize = 256 * 1024;
constexpr mode_t permissionBits = 07777;

// Gives the new file the old one's owner and group, and returns the mode it may then carry: rights meant for
// an owner or a group that could not be given are not given to another one.
mode_t takeOverOwner(int file, const struct stat &old)
{
    mode_t mode = old.st_mode & permissionBits;
    if (::fchown(file, old.st_uid, old.st_gid) == 0)
        return mode;
    mode &= ~static_cast<mode_t>(S_ISUID);
    if (::fchown(file, static_cast<uid_t>(-1), old.st_gid) == 0)
        return mode;
    const mode_t everybody = mode & S_IRWXO;
    return (mode & ~static_cast<mode_t>(S_ISGID | S_IRWXG)) | (everybody << 3);
}

} // namespace

class AtomicFile::Private
{
public:
    Private(const QByteArray &target, QString shown) : replacement(target), shownName(std::move(shown)) { }

    void require(int code) const
    {
        if (code != 0)
            throw systemFailure(code, FileAction::Writing, shownName);
    }
    void takeOverAttributes();
    bool flushBuffer();
    void writeAt(qint64 position, const char *octets, qint64 count);
    void makeDurable();

    PosixReplacement replacement;
    QString shownName;
    std::optional<mode_t> mode; ///< for the complete file
    /// What is not written yet, and where it goes.
    QByteArray buffer;
    qint64 bufferAt = 0;
    qint64 size = 0;
    int failure = 0;
};

void AtomicFile::Private::takeOverAttributes()
{
    const std::optional<struct stat> &old = replacement.old();
    if (!old)
        return;
    mode = takeOverOwner(replacement.file(), *old);
    copyAttributes(replacement.target(), replacement.file());
}

bool AtomicFile::Private::flushBuffer()
{
    writeAt(bufferAt, buffer.constData(), buffer.size());
    bufferAt += buffer.size();
    buffer.resize(0);
    return failure == 0;
}

void AtomicFile::Private::writeAt(qint64 position, const char *octets, qint64 count)
{
    qint64 done = 0;
    while (failure == 0 && done < count) {
        const ssize_t written = uninterrupted([&] {
            return ::pwrite(replacement.file(), octets + done, static_cast<size_t>(count - done),
                            position + done);
        });
        if (written < 0)
            failure = errno;
        else
            done += written;
    }
}

void AtomicFile::Private::makeDurable()
{
    flushBuffer();
    // Set last, because writing takes away the bits that change the user or the group of a program.
    if (mode)
        (void)::fchmod(replacement.file(), *mode);
    // A file system without the call answers EINVAL; every other failure may mean lost octets.
    if (failure == 0 && uninterrupted([this] { return ::fsync(replacement.file()); }) != 0 && errno != EINVAL
        && errno != ENOTSUP)
        failure = errno;
    const int closing = replacement.close();
    if (failure == 0)
        failure = closing;
}

AtomicFile::AtomicFile(const QByteArray &nativePath, const QString &shownName)
    : d(std::make_unique<Private>(nativePath, shownName))
{ }

AtomicFile::~AtomicFile() = default;

void AtomicFile::begin()
{
    d->require(d->replacement.examine());
    // Contents that replace private ones must never be readable by others, not even for a moment.
    d->require(d->replacement.makeTemporary(d->replacement.old() ? S_IRUSR | S_IWUSR : 0666));
    d->takeOverAttributes();
    d->buffer.reserve(bufferSize);
    QIODevice::open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

void AtomicFile::commit()
{
    d->makeDurable();
    if (d->failure == 0)
        d->failure = d->replacement.place();
    if (d->failure == 0)
        d->replacement.syncFolder();
    d->replacement.discard();
    QIODevice::close();
    d->require(d->failure);
}

bool AtomicFile::isSound() const
{
    return d->failure == 0;
}

qint64 AtomicFile::size() const
{
    return d->size;
}

bool AtomicFile::seek(qint64 position)
{
    if (!QIODevice::seek(position))
        return false;
    if (position != d->bufferAt + d->buffer.size()) {
        d->flushBuffer();
        d->bufferAt = position;
    }
    return isSound();
}

qint64 AtomicFile::readData(char *, qint64)
{
    return -1;
}

qint64 AtomicFile::writeData(const char *data, qint64 size)
{
    if (d->buffer.size() + size > bufferSize)
        d->flushBuffer();
    if (size >= bufferSize) {
        d->writeAt(d->bufferAt, data, size);
        d->bufferAt += size;
    } else {
        d->buffer.append(data, size);
    }
    d->size = std::max(d->size, d->bufferAt + d->buffer.size());
    return isSound() ? size : -1;
}

} // namespace vandrel

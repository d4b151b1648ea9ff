#include "platform/filesystem/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QRandomGenerator>

#include "platform/filesystem/SystemFailure.h"

namespace vandrel {

namespace {

// As many links as the kernel itself would follow.
constexpr int maximumLinks = 40;
constexpr qsizetype bufferSize = 256 * 1024;
constexpr size_t maximumAttributes = 64 * 1024;
constexpr mode_t permissionBits = 07777;
constexpr mode_t writeBits = 0222;

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

QByteArray inFolder(const QByteArray &folder, const QByteArray &name)
{
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}

// Calls that a signal interrupted are simply made again.
template<typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

std::optional<QByteArray> linkTarget(const QByteArray &path)
{
    QByteArray target(PATH_MAX, Qt::Uninitialized);
    const ssize_t length = ::readlink(path.constData(), target.data(), static_cast<size_t>(target.size()));
    if (length < 0)
        return {};
    target.truncate(length);
    return target.startsWith('/') ? target : inFolder(folderOf(path), target);
}

QByteArray temporaryName()
{
    return QByteArrayLiteral(".vandrel-") + QByteArray::number(QRandomGenerator::system()->generate64(), 36)
        + QByteArrayLiteral(".tmp");
}

// Attributes that vouch for the old contents, or grant it capabilities, do not fit the new ones.
bool isCarriedOver(const QByteArray &attribute)
{
    return attribute != "security.capability" && attribute != "security.ima" && attribute != "security.evm";
}

void copyAttribute(const QByteArray &from, int to, const QByteArray &attribute)
{
    QByteArray value(maximumAttributes, Qt::Uninitialized);
    const ssize_t size = ::getxattr(from.constData(), attribute.constData(), value.data(), maximumAttributes);
    if (size >= 0)
        (void)::fsetxattr(to, attribute.constData(), value.constData(), static_cast<size_t>(size), 0);
}

// Best effort: not every file system has attributes, and not every user may set each of them. Access control
// lists are among them.
void copyAttributes(const QByteArray &from, int to)
{
    QByteArray names(maximumAttributes, Qt::Uninitialized);
    const ssize_t length = ::listxattr(from.constData(), names.data(), maximumAttributes);
    if (length <= 0)
        return;
    names.truncate(length);
    for (const QByteArray &attribute : names.split('\0')) {
        if (!attribute.isEmpty() && isCarriedOver(attribute))
            copyAttribute(from, to, attribute);
    }
}

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
    [[noreturn]] void fail(int code) const { throw systemFailure(code, FileAction::Writing, shownName); }
    void resolveTarget();
    void examineTarget();
    void makeTemporary();
    void takeOverAttributes();
    bool flushBuffer();
    void discard();
    void makeDurable();
    void rename();
    void syncFolder() const;

    QByteArray path;
    QString shownName;
    std::optional<struct stat> old;
    std::optional<mode_t> mode; ///< for the complete file
    QByteArray temporary;
    QByteArray buffer;
    int file = -1;
    int failure = 0;
};

void AtomicFile::Private::resolveTarget()
{
    for (int links = 0; const auto target = linkTarget(path); ++links) {
        if (links == maximumLinks)
            fail(ELOOP);
        path = *target;
    }
    // Anything that is no link ends the chain, also a name that does not exist; the rest is found out later.
    if (errno != EINVAL && errno != ENOENT)
        fail(errno);
}

void AtomicFile::Private::examineTarget()
{
    struct stat found = {};
    if (::stat(path.constData(), &found) != 0) {
        if (errno != ENOENT)
            fail(errno);
        return;
    }
    if (S_ISDIR(found.st_mode))
        fail(EISDIR);
    if (!S_ISREG(found.st_mode))
        fail(ENODEV);
    // Renaming asks for no right on the file itself, so that a file protected against writing must be refused
    // here; one that nobody may write stays protected even from the privileged.
    if ((found.st_mode & writeBits) == 0)
        fail(EACCES);
    if (::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0)
        fail(errno);
    old = found;
}

void AtomicFile::Private::makeTemporary()
{
    // Contents that replace private ones must never be readable by others, not even for a moment.
    const mode_t atFirst = old ? S_IRUSR | S_IWUSR : 0666;
    const QByteArray folder = folderOf(path);
    do {
        temporary = inFolder(folder, temporaryName());
        file = uninterrupted(
            [&] { return ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, atFirst); });
    } while (file < 0 && errno == EEXIST);
    if (file < 0) {
        temporary.clear();
        fail(errno);
    }
}

void AtomicFile::Private::takeOverAttributes()
{
    if (!old)
        return;
    mode = takeOverOwner(file, *old);
    copyAttributes(path, file);
}

bool AtomicFile::Private::flushBuffer()
{
    qsizetype done = 0;
    while (failure == 0 && done < buffer.size()) {
        const ssize_t written = uninterrupted([&] {
            return ::write(file, buffer.constData() + done, static_cast<size_t>(buffer.size() - done));
        });
        if (written < 0)
            failure = errno;
        else
            done += written;
    }
    buffer.resize(0);
    return failure == 0;
}

void AtomicFile::Private::discard()
{
    if (file >= 0)
        ::close(std::exchange(file, -1));
    if (!temporary.isEmpty())
        ::unlink(std::exchange(temporary, {}).constData());
    buffer.clear();
}

void AtomicFile::Private::makeDurable()
{
    flushBuffer();
    // Set last, because writing takes away the bits that change the user or the group of a program.
    if (mode)
        (void)::fchmod(file, *mode);
    // A file system without the call answers EINVAL; every other failure may mean lost octets.
    if (failure == 0 && uninterrupted([this] { return ::fsync(file); }) != 0 && errno != EINVAL
        && errno != ENOTSUP)
        failure = errno;
    // Network file systems report what they could not store only here. The number is gone either way.
    if (::close(std::exchange(file, -1)) != 0 && failure == 0 && errno != EINTR)
        failure = errno;
}

void AtomicFile::Private::rename()
{
    if (::rename(temporary.constData(), path.constData()) == 0)
        temporary.clear();
    else
        failure = errno;
}

// Makes the rename itself durable. By now the new contents are in place, so that a file system that cannot
// do this is no reason to report a failed save.
void AtomicFile::Private::syncFolder() const
{
    const int folder = ::open(folderOf(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    (void)::fsync(folder);
    ::close(folder);
}

AtomicFile::AtomicFile(const QByteArray &nativePath, const QString &shownName)
    : d(std::make_unique<Private>())
{
    d->path = nativePath;
    d->shownName = shownName;
}

AtomicFile::~AtomicFile()
{
    d->discard();
}

void AtomicFile::begin()
{
    d->resolveTarget();
    d->examineTarget();
    d->makeTemporary();
    d->takeOverAttributes();
    d->buffer.reserve(bufferSize);
    QIODevice::open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

void AtomicFile::commit()
{
    d->makeDurable();
    if (d->failure == 0)
        d->rename();
    const int failure = d->failure;
    if (failure == 0)
        d->syncFolder();
    d->discard();
    QIODevice::close();
    if (failure != 0)
        d->fail(failure);
}

bool AtomicFile::isSound() const
{
    return d->failure == 0;
}

qint64 AtomicFile::readData(char *, qint64)
{
    return -1;
}

qint64 AtomicFile::writeData(const char *data, qint64 size)
{
    d->buffer.append(data, size);
    if (d->buffer.size() >= bufferSize)
        d->flushBuffer();
    return isSound() ? size : -1;
}

} // namespace vandrel

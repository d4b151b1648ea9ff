#include "platform/filesystem/PosixReplacement.h"

#include <climits>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QByteArrayList>
#include <QRandomGenerator>

namespace vandrel {

namespace {

// As many links as the kernel itself would follow.
constexpr int maximumLinks = 40;
constexpr size_t maximumAttributes = 64 * 1024;
constexpr mode_t writeBits = 0222;
// Where the system lists the files that this process has open.
constexpr const char *openFiles = "/proc/self/fd/";

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

} // namespace

void copyAttributes(const QByteArray &from, int to)
{
    const ssize_t needed = ::listxattr(from.constData(), nullptr, 0);
    if (needed <= 0)
        return;
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

int PosixReplacement::followLinks()
{
    for (int links = 0; const auto target = linkTarget(m_target); ++links) {
        if (links == maximumLinks)
            return ELOOP;
        m_target = *target;
    }
    // Anything that is no link ends the chain, also a name that does not exist; the rest is found out later.
    return errno == EINVAL || errno == ENOENT ? 0 : errno;
}

int PosixReplacement::examine()
{
    struct stat found = {};
    int failure = ::lstat(m_target.constData(), &found) == 0 ? 0 : errno;
    if (failure == 0 && S_ISLNK(found.st_mode)) {
        failure = followLinks();
        if (failure == 0 && ::lstat(m_target.constData(), &found) != 0)
            failure = errno;
    }
    if (failure != 0)
        return failure == ENOENT ? 0 : failure;
    if (S_ISDIR(found.st_mode))
        return EISDIR;
    if (!S_ISREG(found.st_mode))
        return ENODEV;
    // Renaming asks for no right on the file itself, so that a file protected against writing must be refused
    // here; one that nobody may write stays protected even from the privileged.
    if ((found.st_mode & writeBits) == 0)
        return EACCES;
    if (::faccessat(AT_FDCWD, m_target.constData(), W_OK, AT_EACCESS) != 0)
        return errno;
    m_old = found;
    return 0;
}

int PosixReplacement::makeTemporary(mode_t mode)
{
    const QByteArray folder = folderOf(m_target);
    do {
        m_temporary = inFolder(folder, temporaryName());
        m_file = uninterrupted(
            [&] { return ::open(m_temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); });
    } while (m_file < 0 && errno == EEXIST);
    if (m_file >= 0)
        return 0;
    m_temporary.clear();
    return errno;
}

int PosixReplacement::makeNameless(mode_t mode)
{
    static const bool canBeNamed = ::access(openFiles, X_OK) == 0;
    if (!canBeNamed)
        return EOPNOTSUPP;
    m_file = uninterrupted(
        [&] { return ::open(folderOf(m_target).constData(), O_WRONLY | O_TMPFILE | O_CLOEXEC, mode); });
    m_isNameless = m_file >= 0;
    return m_isNameless ? 0 : errno;
}

int PosixReplacement::close()
{
    // Closing any descriptor of the file has it stored. The number is gone either way.
    const int file = m_isNameless ? ::fcntl(m_file, F_DUPFD_CLOEXEC, 0) : std::exchange(m_file, -1);
    return ::close(file) != 0 && errno != EINTR ? errno : 0;
}

int PosixReplacement::link(const QByteArray &name) const
{
    const QByteArray file = openFiles + QByteArray::number(m_file);
    const int done = ::linkat(AT_FDCWD, file.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW);
    return done == 0 ? 0 : errno;
}

int PosixReplacement::name()
{
    const int failure = link(m_target);
    if (failure == 0)
        ::close(std::exchange(m_file, -1));
    return failure;
}

// A name can be given to a file, but only renaming takes it away from another.
int PosixReplacement::place()
{
    if (m_isNameless) {
        if (const int failure = m_old ? EEXIST : name(); failure != EEXIST)
            return failure;
        const QByteArray temporary = inFolder(folderOf(m_target), temporaryName());
        if (const int failure = link(temporary))
            return failure;
        m_temporary = temporary;
    }
    if (::rename(m_temporary.constData(), m_target.constData()) != 0)
        return errno;
    m_temporary.clear();
    return 0;
}

// By now the new contents are in place, so that a file system that cannot do this is no reason to report a failure.
void PosixReplacement::syncFolder() const
{
    const int folder = ::open(folderOf(m_target).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    (void)::fsync(folder);
    ::close(folder);
}

void PosixReplacement::discard()
{
    if (m_file >= 0)
        ::close(std::exchange(m_file, -1));
    if (!m_temporary.isEmpty())
        ::unlink(std::exchange(m_temporary, {}).constData());
}

} // namespace vandrel

#include "platform/filesystem/FileCopier.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/filesystem/NativeFile.h"
#include "platform/filesystem/PosixReplacement.h"
#include "platform/filesystem/SystemFailure.h"

namespace vandrel {

namespace {

constexpr mode_t anyoneWrites = 0222;
// A copy belongs to who makes it, so that rights meant for the owner of a program do not go with it.
constexpr mode_t copiedBits = 0777;
// Below this size, the calls that could spare reading and writing cost more than both.
constexpr off_t smallSize = 256 * 1024;
// How much is copied between two looks at whether to go on.
constexpr size_t step = 4 * 1024 * 1024;
constexpr size_t copyBufferSize = 64 * 1024;

class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) { }
    ~Descriptor() { ::close(m_number); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int number() const { return m_number; }

private:
    int m_number;
};

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool hasChanged(const struct stat &before, const struct stat &after)
{
    return before.st_size != after.st_size || before.st_mtim.tv_sec != after.st_mtim.tv_sec
        || before.st_mtim.tv_nsec != after.st_mtim.tv_nsec;
}

RuntimeError ontoItself(const NamedFile &file)
{
    return RuntimeError(error::PermissionDenied,
                        QStringLiteral("%1. \"%2\" cannot be copied onto itself. Choose another folder.")
                            .arg(runtimeErrorText(error::PermissionDenied), file.shown));
}

RuntimeError changedMeanwhile(const NamedFile &file)
{
    return RuntimeError(
        error::PathFileAccess,
        QStringLiteral(
            "%1. \"%2\" changed while it was copied. Close the program that writes it and try again.")
            .arg(runtimeErrorText(error::PathFileAccess), file.shown));
}

/// The octets of one file on their way to another.
class Octets
{
public:
    Octets(int from, int to, const CopyProgress &goOn) : m_from(from), m_to(to), m_goOn(goOn) { }

    /// Copies all there is. Returns false when it was stopped or something failed.
    bool copy(const struct stat &source);

    /// The errno of what failed, and whether it was reading.
    int failure() const { return m_failure; }
    bool failedReading() const { return m_failedReading; }

private:
    bool copyData(const struct stat &source);
    bool copyBetween(off_t begin, off_t end);
    bool copyInKernel(off_t &position, off_t end);
    bool copyThroughBuffer(off_t position, off_t end);
    bool writeAll(const char *data, size_t size, off_t position);
    bool fail(bool reading);

    int m_from;
    int m_to;
    const CopyProgress &m_goOn;
    off_t m_size = 0;
    int m_failure = 0;
    bool m_failedReading = false;
    bool m_kernelCopies = true;
};

bool Octets::fail(bool reading)
{
    m_failure = errno;
    m_failedReading = reading;
    return false;
}

bool Octets::copy(const struct stat &source)
{
    m_size = source.st_size;
    // What a file system makes up as it is read has no size to go by.
    if (source.st_size <= smallSize)
        return copyThroughBuffer(0, std::numeric_limits<off_t>::max());
    if (::ioctl(m_to, FICLONE, m_from) == 0)
        return m_goOn(m_size, m_size);
    if (!copyData(source))
        return false;
    return ::ftruncate(m_to, source.st_size) == 0 || fail(false);
}

// Passes over the holes of a file that has some.
bool Octets::copyData(const struct stat &source)
{
    constexpr off_t blockUnit = 512;
    if (source.st_blocks * blockUnit >= source.st_size)
        return copyBetween(0, source.st_size);
    off_t position = 0;
    while (position < source.st_size) {
        const off_t data = ::lseek(m_from, position, SEEK_DATA);
        if (data < 0)
            return errno == ENXIO || copyBetween(position, source.st_size);
        const off_t hole = ::lseek(m_from, data, SEEK_HOLE);
        position = hole < 0 ? source.st_size : hole;
        if (!copyBetween(data, position))
            return false;
    }
    return true;
}

bool Octets::copyBetween(off_t begin, off_t end)
{
    off_t position = begin;
    if (m_kernelCopies && !copyInKernel(position, end))
        return false;
    return position >= end || copyThroughBuffer(position, end);
}

// Copies as far as the kernel does it by itself. Where it does not, `position` stays before `end` and there is no
// failure.
bool Octets::copyInKernel(off_t &position, off_t end)
{
    off_t target = position;
    while (position < end) {
        const size_t size = std::min(step, static_cast<size_t>(end - position));
        const ssize_t copied
            = uninterrupted([&] { return ::copy_file_range(m_from, &position, m_to, &target, size, 0); });
        if (copied < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO))
            return fail(false);
        if (copied <= 0) {
            m_kernelCopies = false;
            return true;
        }
        if (!m_goOn(position, m_size))
            return false;
    }
    return true;
}

bool Octets::copyThroughBuffer(off_t position, off_t end)
{
    std::array<char, copyBufferSize> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init)
    while (position < end) {
        const size_t size = std::min(buffer.size(), static_cast<size_t>(end - position));
        const ssize_t count = uninterrupted([&] { return ::pread(m_from, buffer.data(), size, position); });
        if (count < 0)
            return fail(true);
        if (count == 0)
            return true;
        if (!writeAll(buffer.data(), static_cast<size_t>(count), position))
            return false;
        position += count;
        if (!m_goOn(position, m_size))
            return false;
        // What has come since then is found by looking at the file once more.
        if (m_size > 0 && position >= m_size)
            return true;
    }
    return true;
}

bool Octets::writeAll(const char *data, size_t size, off_t position)
{
    size_t done = 0;
    while (done < size) {
        const ssize_t count = uninterrupted(
            [&] { return ::pwrite(m_to, data + done, size - done, position + static_cast<off_t>(done)); });
        if (count < 0)
            return fail(false);
        done += static_cast<size_t>(count);
    }
    return true;
}

void requireWritten(int code, const NamedFile &target)
{
    if (code != 0)
        throw systemFailure(code, FileAction::Writing, target.shown);
}

struct stat stateOf(int file, const NamedFile &source)
{
    struct stat state = {};
    if (::fstat(file, &state) != 0)
        throw systemFailure(errno, FileAction::Reading, source.shown);
    return state;
}

// The times come last, since all else changes them. A file system that knows no times or rights has none to keep.
void takeOver(const NamedFile &source, const struct stat &state, int copy)
{
    copyAttributes(source.native, copy);
    (void)::fchmod(copy, state.st_mode & copiedBits);
    const std::array times{state.st_atim, state.st_mtim};
    (void)::futimens(copy, times.data());
}

/// Fills the new file with what the source holds, and closes it. False when that was stopped.
bool fill(const NamedFile &source,
          const struct stat &before,
          int from,
          const NamedFile &target,
          PosixReplacement &copy,
          const CopyProgress &goOn)
{
    Octets octets(from, copy.file(), goOn);
    if (!octets.copy(before)) {
        if (octets.failure() == 0)
            return false;
        throw octets.failedReading() ? systemFailure(octets.failure(), FileAction::Reading, source.shown)
                                     : systemFailure(octets.failure(), FileAction::Writing, target.shown);
    }
    if (hasChanged(before, stateOf(from, source)))
        throw changedMeanwhile(source);
    takeOver(source, before, copy.file());
    requireWritten(copy.close(), target);
    return true;
}

class PosixPreparedCopy final : public PreparedCopy
{
public:
    PosixPreparedCopy(QByteArray source, const struct stat &state, const QByteArray &target)
        : m_source(std::move(source)), m_state(state), m_copy(target)
    { }

    PosixReplacement &copy() { return m_copy; }
    bool place() override;

private:
    bool isStillTheSame() const;

    QByteArray m_source;
    struct stat m_state;
    PosixReplacement m_copy;
};

bool PosixPreparedCopy::isStillTheSame() const
{
    struct stat now = {};
    return ::stat(m_source.constData(), &now) == 0 && isSameFile(m_state, now) && !hasChanged(m_state, now)
        && m_state.st_ctim.tv_sec == now.st_ctim.tv_sec && m_state.st_ctim.tv_nsec == now.st_ctim.tv_nsec;
}

bool PosixPreparedCopy::place()
{
    if (!isStillTheSame())
        return false;
    if (m_copy.name() == 0)
        return true;
    if (m_copy.examine() != 0 || (m_copy.old() && isSameFile(m_state, *m_copy.old())))
        return false;
    return m_copy.place() == 0;
}

} // namespace

bool copyFile(const NamedFile &source, const NamedFile &target, const CopyProgress &goOn)
{
    const Descriptor from(openDescriptorForReading(source.native, source.shown));
    const struct stat before = stateOf(from.number(), source);
    PosixReplacement copy(target.native);
    requireWritten(copy.examine(), target);
    if (copy.old() && isSameFile(before, *copy.old()))
        throw ontoItself(source);
    constexpr mode_t mode = S_IRUSR | S_IWUSR;
    if (copy.makeNameless(mode) != 0)
        requireWritten(copy.makeTemporary(mode), target);
    if (!fill(source, before, from.number(), target, copy, goOn))
        return false;
    requireWritten(copy.place(), target);
    return true;
}

std::unique_ptr<PreparedCopy> prepareCopy(const NamedFile &source, const NamedFile &target)
{
    const CopyProgress whileSmall = [](qint64 copied, qint64) { return copied <= smallSize; };
    try {
        const Descriptor from(openDescriptorForReading(source.native, source.shown));
        const struct stat before = stateOf(from.number(), source);
        if (before.st_size > smallSize)
            return nullptr;
        auto prepared = std::make_unique<PosixPreparedCopy>(source.native, before, target.native);
        if (prepared->copy().makeNameless(S_IRUSR | S_IWUSR) != 0
            || !fill(source, before, from.number(), target, prepared->copy(), whileSmall))
            return nullptr;
        return prepared;
    } catch (const RuntimeError &) {
        return nullptr;
    }
}

void deleteFile(const NamedFile &file)
{
    struct stat found = {};
    int code = ::lstat(file.native.constData(), &found) == 0 ? 0 : errno;
    if (code == 0 && S_ISDIR(found.st_mode))
        code = EISDIR;
    // The right to delete is one on the folder; a file protected against writing is meant to stay all the same.
    if (code == 0 && S_ISREG(found.st_mode) && (found.st_mode & anyoneWrites) == 0)
        code = EACCES;
    if (code == 0 && ::unlink(file.native.constData()) != 0)
        code = errno;
    if (code != 0)
        throw systemFailure(code, FileAction::Deleting, file.shown);
}

} // namespace vandrel

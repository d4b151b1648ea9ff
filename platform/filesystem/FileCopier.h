#pragma once

#include <functional>
#include <memory>

#include <QByteArray>
#include <QString>

namespace vandrel {

/// A file by its native name, and by the DOS-style path that error texts name it with.
struct NamedFile {
    QByteArray native;
    QString shown;
};

/// Told how many octets of a file's size are copied by now, at least once every few megabytes; false stops the copy.
using CopyProgress = std::function<bool(qint64 copied, qint64 size)>;

/// Copies a file, or the one that a link leads to, and takes over its times, permissions, access control list and
/// extended attributes; the copy belongs to who makes it. The copy takes the target's place when it is complete; until
/// then, and after a failure or a stop, an old target is as it was. Shares the octets where the file system can do
/// that, and keeps holes. Returns false when it was stopped.
///
/// Blocks as long as the file systems do; usable on any thread. Raises what openForReading() and
/// AtomicFile::begin() raise, Permission denied (70) for a target that is the source itself, Path/File access error
/// (75) when the source changed meanwhile, and the other errors of systemFailure().
bool copyFile(const NamedFile &source, const NamedFile &target, const CopyProgress &goOn);

/// A copy that is whole already, and that nobody sees before it is placed. Without that, nothing is left of it.
class PreparedCopy
{
public:
    virtual ~PreparedCopy() = default;
    /// Does what is left of copyFile(). False where nothing has been done, since the source has changed or something
    /// else needs the whole of copyFile(), which then finds what there is to say.
    virtual bool place() = 0;
};

/// Makes a copy of a small file ahead, up to where it would be seen. Nothing where that cannot be done, whatever the
/// reason: copyFile() tells it. Raises nothing; blocks as long as the file systems do; usable on any thread.
std::unique_ptr<PreparedCopy> prepareCopy(const NamedFile &source, const NamedFile &target);

/// Deletes a file; of a link, the link alone. Raises File not found (53), Path/File access error (75) for a folder,
/// Permission denied (70) for a missing right and for a file whose mode lets nobody write, and the other errors of
/// systemFailure().
void deleteFile(const NamedFile &file);

} // namespace vandrel

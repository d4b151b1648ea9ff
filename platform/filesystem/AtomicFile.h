#pragma once

#include <memory>

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace vandrel {

/// Replaces a file as a whole or not at all: what is written goes to a temporary file in the target's folder,
/// and commit() makes it durable and renames it over the target. Writing may go back to any position, as formats need
/// whose beginning tells of their end. Whatever ends the object earlier (a failure,
/// a cancellation, an exception) removes the temporary file and leaves the old file untouched.
///
/// The new file takes over mode, owner and group (as far as the system lets this user give them), access
/// control list and extended attributes of the one it replaces; a new name gets the user's defaults. A
/// symbolic link, or a chain of them, is followed to its end, and the file it names is replaced or, for a
/// link to nothing, made. Other hard links of the replaced file keep the old contents.
///
/// The toolkit's QSaveFile is not used because it cannot name a file whose name is not valid UTF-8, reports
/// no error number by which a full disk could be told from a missing right, replaces a read-only file when
/// run with privileges, and drops owner, access control list and extended attributes.
///
/// Names are native octets; the shown name is the DOS-style path for error texts. Usable on any one thread.
class AtomicFile final : public QIODevice
{
public:
    AtomicFile(const QByteArray &nativePath, const QString &shownName);
    /// Discards what was not committed.
    ~AtomicFile() override;
    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    /// Makes the temporary file. Raises Permission denied (70) for a missing right, a read-only drive, and a
    /// target whose mode lets nobody write; Path/File access error (75) for a folder, a device, a pipe or
    /// links in a circle; Path not found (76) for a missing folder; and the other errors of systemFailure().
    void begin();

    /// Makes what was written the target's new contents. Raises the first failure of writing, or that of
    /// flushing or renaming: Disk full (61), Device I/O error (57) and the other errors of systemFailure().
    /// The object is closed afterwards in either case.
    void commit();

    /// False once an octet could not be written; the writer may stop early, and commit() raises the reason.
    bool isSound() const;

    bool isSequential() const override { return false; }
    qint64 size() const override;
    bool seek(qint64 position) override;

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace vandrel

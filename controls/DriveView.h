#pragma once

#include <map>
#include <mutex>

#include <QByteArray>
#include <QString>

namespace vandrel {

/// Files as the user sees them: DOS-style paths over the system's own. "c:" is the home folder, "z:" the root
/// of the file system, "d:" to "y:" removable and network mounts. Every native name maps to a DOS-style one
/// and back without loss, whatever bytes it holds; a typed path that starts with "/" is a native one.
///
/// Pure mapping over a table of drives; it touches no file, so symbolic links stay as they are. The table is
/// filled by platform/filesystem. Usable from any thread: workers turn paths while drives come and go.
class DriveView
{
public:
    DriveView() = default;
    DriveView(const DriveView &) = delete;
    DriveView &operator=(const DriveView &) = delete;

    /// Sets the native folder (absolute, "" or "/" for the root) that a drive letter shows; letters are taken
    /// in either case. The drive's current folder becomes its root when the native folder changes. Raises
    /// Device unavailable (68) for anything but a letter.
    void setDrive(char letter, const QByteArray &nativeRoot);
    /// Takes a drive away. When it was the current one, relative paths raise Device unavailable (68) until
    /// another is chosen: nothing is written to a place nobody named.
    void removeDrive(char letter);
    /// Letters ('a' to 'z') in order with their native roots, without a trailing "/".
    std::map<char, QByteArray> drives() const;

    /// The DOS-style path of an absolute native path: longest drive root first ("c:\" for a root itself).
    /// Never fails: a path under no drive is given as a native one, which toNative() takes back.
    QString toDos(const QByteArray &native) const;
    /// The same on the drive `letter`, for a list that keeps its drive while the path lies under its root;
    /// toDos() when it does not.
    QString toDosOn(char letter, const QByteArray &native) const;

    /// The native path of a typed or shown DOS-style path. "/" and "\" both separate; relative paths are
    /// taken from the current folder of their drive (or of the current drive). "." and ".." are resolved by
    /// name and stay inside the drive. A path that starts with "/" is a native one, in which only "/"
    /// separates. Raises Device unavailable (68) for an unknown drive and Bad file name (52) for an empty
    /// path, a NUL, half a surrogate pair, or a path of another machine ("\\machine\share").
    QByteArray toNative(const QString &dos) const;

    /// The current drive's letter, 'c' at start.
    char currentDrive() const;
    /// Raises Device unavailable (68) for an unknown drive.
    void setCurrentDrive(char letter);
    /// The current folder of a drive, as a DOS-style path on that drive ("c:\" at start). Raises Device
    /// unavailable (68) for an unknown drive.
    QString currentFolder(char letter) const;
    /// Makes a folder the current one of its drive; the current drive stays. Raises what toNative() raises.
    void setCurrentFolder(const QString &dosFolder);

private:
    const QByteArray &root(char letter) const;
    const QByteArray &folder(char letter) const;
    char driveOf(const QByteArray &native) const;
    char driveNamedBy(const QString &dos) const;

    // Public functions build on each other, hence recursive.
    mutable std::recursive_mutex m_mutex;
    std::map<char, QByteArray> m_drives;
    /// Native folders, absent while a drive is still at its root.
    std::map<char, QByteArray> m_currentFolders;
    char m_currentDrive = 'c';
};

/// One name of a native path as the user sees it. Valid UTF-8 is shown as it is. An octet b that a DOS-style
/// name cannot hold becomes the private character U+F000 + b: control octets, " * : < > ? | \, a final blank,
/// octets that are not UTF-8, and each octet of a private character U+F001 to U+F0FF that the name itself
/// holds.
QString dosName(const QByteArray &nativeName);
/// The way back. Raises Bad file name (52) for a NUL, a "/" or half a surrogate pair.
QByteArray nativeName(const QString &dosName);

} // namespace vandrel

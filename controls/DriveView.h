#pragma once

#include <map>

#include <QByteArray>
#include <QString>

namespace vandrel {

/// Files as the user sees them: DOS-style paths over the system's own. "c:" is the home folder, "z:" the root
/// of the file system, "d:" to "y:" removable and network mounts. Every native name maps to a DOS-style one
/// and back without loss, whatever bytes it holds; a typed path that starts with "/" is a native one.
///
/// Pure mapping over a table of drives; it touches no file. The table is filled by platform/filesystem.
class DriveView
{
public:
    /// Sets the native folder (absolute, no trailing "/", "" for the root) that a drive letter shows.
    void setDrive(char letter, const QByteArray &nativeRoot);
    void removeDrive(char letter);
    /// Letters ('c' to 'z') in order with their native roots.
    const std::map<char, QByteArray> &drives() const { return m_drives; }

    /// The DOS-style path of an absolute native path: longest drive root first. Never fails.
    QString toDos(const QByteArray &native) const;

    /// The native path of a typed or shown DOS-style path. "/" and "\" both separate; relative paths are taken
    /// from the current folder of their drive (or of the current drive). "." and ".." are resolved and stay
    /// inside the drive. Raises Device unavailable (68) for an unknown drive and Bad file name (52) for a NUL
    /// or a name that cannot exist.
    QByteArray toNative(const QString &dos) const;

    /// The current drive's letter, 'c' at start.
    char currentDrive() const { return m_currentDrive; }
    void setCurrentDrive(char letter);
    /// The current folder of a drive, as a DOS-style path ("c:\" at start).
    QString currentFolder(char letter) const;
    void setCurrentFolder(const QString &dosFolder);

private:
    std::map<char, QByteArray> m_drives;
    std::map<char, QByteArray> m_currentFolders;
    char m_currentDrive = 'c';
};

/// One name of a native path as the user sees it, and back. See DriveView.
QString dosName(const QByteArray &nativeName);
QByteArray nativeName(const QString &dosName);

} // namespace vandrel

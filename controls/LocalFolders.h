#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <QObject>
#include <QString>
#include <QStringList>

#include "controls/DriveView.h"

namespace vandrel {

/// What a folder's entries may be asked for.
enum class EntryKind { Folders, Files };

/// Tells what a folder holds when that changes. Destroying it ends the watch. User-interface thread only.
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    /// The names that there are now, in the order of sortedNames(); none where the folder is gone or cannot be read.
    /// Comes soon after a change, and while the changes go on so seldom that following them is but a small part of
    /// what the computer does.
    void changed(const QStringList &names);
};

/// What the drive, folder and file lists show: drives, and what folders hold. The implementation lives in
/// platform/filesystem. User-interface thread only.
class LocalFolders : public QObject
{
    Q_OBJECT

public:
    struct Drive {
        char letter = 0;
        /// What the drive is, for the user; "" where its letter says it all.
        QString label;
    };

    explicit LocalFolders(std::shared_ptr<DriveView> view) : m_view(std::move(view)) { }

    /// The mapping behind the paths, with the current drive and folders.
    const DriveView &view() const { return *m_view; }

    /// The drives there are, by letter.
    virtual std::vector<Drive> drives() const = 0;

    /// The names in a folder, in no order, hidden ones left out; a link counts as what it leads to. `dosFolder` is
    /// a full path. Raise Path not found (76), Permission denied (70), Device unavailable (68), Disk not ready (71)
    /// for a drive that does not answer within a few seconds, and Device I/O error (57).
    virtual QStringList folderNames(const QString &dosFolder) const = 0;
    /// Plain files, and links that lead nowhere.
    virtual QStringList fileNames(const QString &dosFolder) const = 0;

    /// Watches one kind of entries of a folder, which is read without holding anybody up. The folder need not be
    /// there; one whose drive comes again is watched from then on.
    virtual std::unique_ptr<FolderWatch> watch(const QString &dosFolder, EntryKind kind) = 0;

Q_SIGNALS:
    /// A drive came or went.
    void drivesChanged();

private:
    std::shared_ptr<DriveView> m_view;
};

/// The full path of a typed one, on the drive that it names ("c:" is that drive's current folder). Raises what
/// DriveView::toNative() raises.
QString fullDosPath(const DriveView &view, const QString &typed);
/// A name in a folder: with a "\" between them, unless the folder is a root and ends in one.
QString inDosFolder(const QString &folder, const QString &name);
/// The folder that holds a folder, given by its full path; "" for a root.
QString dosParent(const QString &folder);

} // namespace vandrel

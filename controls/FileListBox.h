#pragma once

#include <memory>

#include <QString>
#include <QStringList>

#include "controls/ListBox.h"
#include "controls/LocalFolders.h"

namespace vandrel {

/// The files of a folder whose names match a pattern, sorted without regard to case. Hidden files are not listed; a
/// link to a file is one. The list is complete when Path is set, also for a hundred thousand files, and follows soon when
/// files come and go: what was chosen stays so where it still exists, and no event is raised.
///
/// Starts with the current folder of the current drive, and raises no event for that.
class FileListBox : public ListBox
{
    Q_OBJECT

public:
    explicit FileListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent = nullptr);

    /// The folder's full path.
    QString Path() const { return m_path; }
    /// Shows another folder and raises PathChange; the same folder raises nothing. Raises what
    /// LocalFolders::fileNames() and DriveView::toNative() raise, and leaves the list as it was then.
    void setPath(const QString &path);

    /// Patterns with "*" and "?", separated by ";"; "*.*" is every file.
    QString Pattern() const { return m_pattern; }
    /// Lists the files of another pattern and raises PatternChange; the same pattern raises nothing.
    void setPattern(const QString &pattern);

    /// The chosen file's name, "" when there is none.
    QString FileName() const { return Text(); }

    /// Reads the folder again; what was chosen stays so where it still exists. Raises no event. A folder that cannot
    /// be read any more has no files.
    void Refresh();

    enum DragAction { CancelDrag = 0, BeginDrag = 1 };
    /// Begins to drag the chosen files with the mouse button that is pressed on the list, and returns when they are
    /// dropped or the drag is cancelled; a picture at the pointer tells how many there are. Nothing begins before the
    /// pointer has been moved by the system's distance, nor without a pressed button. Cancelling ends a drag of any
    /// control, and is nothing without one.
    void Drag(DragAction action);

Q_SIGNALS:
    void PathChange();
    void PatternChange();

private:
    void follow();
    std::vector<ListBoxItem> linesFor(const QStringList &sorted) const;

    std::shared_ptr<LocalFolders> m_folders;
    std::unique_ptr<FolderWatch> m_watch;
    QString m_path;
    QString m_pattern = QStringLiteral("*.*");
};

/// True when a file's name matches one of the patterns separated by ";", letters of either case alike.
bool matchesPattern(const QString &name, const QString &patterns);

} // namespace vandrel

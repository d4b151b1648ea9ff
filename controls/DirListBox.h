#pragma once

#include <memory>

#include <QString>

#include "controls/ListBox.h"
#include "controls/LocalFolders.h"

namespace vandrel {

/// The way from a drive's root down to a folder, and the folders in it. A double click or Enter opens a folder,
/// Backspace the one above. Hidden folders are not listed; a link to a folder is one. The list
/// follows soon when folders come and go in the open one; when that goes itself, it stays open without any. No event is
/// raised for either.
///
/// A folder that the user chooses and that cannot be opened is told in a message box; the list stays where it is.
/// Starts with the current folder of the current drive, and raises no event for that.
class DirListBox : public ListBox
{
    Q_OBJECT

public:
    explicit DirListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent = nullptr);

    /// The open folder's full path.
    QString Path() const { return m_path; }
    /// Opens a folder and raises Change; the same folder raises nothing. Raises what LocalFolders::folderNames() and
    /// DriveView::toNative() raise, and leaves the list as it was then.
    void setPath(const QString &path);

    /// Reads the open folder again, or the nearest one above it that can still be read; raises Change in that case
    /// alone.
    void Refresh();

Q_SIGNALS:
    void Change();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QString folderAt(int index) const;
    void open(const QString &folder);
    void openChosen();
    void display(const QString &folder, const QStringList &names);
    std::vector<ListBoxItem> linesFor(const QStringList &sorted) const;

    std::shared_ptr<LocalFolders> m_folders;
    std::unique_ptr<FolderWatch> m_watch;
    QString m_path;
    /// The open folder and those above it, the root first.
    QStringList m_way;
};

} // namespace vandrel

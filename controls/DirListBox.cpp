#include "controls/DirListBox.h"

#include <algorithm>
#include <utility>

#include <QKeyEvent>
#include <QStyle>

#include "controls/SortedNames.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

QStringList wayTo(const QString &folder)
{
    QStringList way;
    for (QString above = folder; !above.isEmpty(); above = dosParent(above))
        way.prepend(above);
    return way;
}

// A root is shown as its path, any other folder by its name.
QString shownName(const QString &folder)
{
    const QString parent = dosParent(folder);
    if (parent.isEmpty())
        return folder;
    const bool isBelowRoot = dosParent(parent).isEmpty();
    return folder.sliced(parent.size() + (isBelowRoot ? 0 : 1));
}

} // namespace

DirListBox::DirListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent)
    : ListBox(parent), m_folders(std::move(folders))
{
    setAccessibleName(tr("Folders"));
    onEvent(this, &ListBox::DblClick, this, &DirListBox::openChosen);
    const DriveView &view = m_folders->view();
    m_path = view.currentFolder(view.currentDrive());
    Refresh();
}

void DirListBox::setPath(const QString &path)
{
    const QString full = fullDosPath(m_folders->view(), path);
    if (full == m_path)
        return;
    const QStringList names = m_folders->folderNames(full);
    display(full, names);
    Q_EMIT Change();
}

void DirListBox::Refresh()
{
    const QString before = m_path;
    const QStringList way = wayTo(m_path);
    for (auto folder = way.crbegin(); folder != way.crend(); ++folder) {
        try {
            display(*folder, m_folders->folderNames(*folder));
            break;
        } catch (const RuntimeError &) {
            // The one above may still be there; a root that is gone stays, without folders.
            if (std::next(folder) == way.crend())
                display(*folder, {});
        }
    }
    if (m_path != before)
        Q_EMIT Change();
}

void DirListBox::display(const QString &folder, const QStringList &names)
{
    m_path = folder;
    m_way = wayTo(folder);
    setLines(linesFor(sortedNames(names)));
    choose(static_cast<int>(m_way.size()) - 1);
    m_watch = m_folders->watch(m_path, EntryKind::Folders);
    onEvent(m_watch.get(), &FolderWatch::changed, this,
            [this](const QStringList &below) { updateLinesAtRest(linesFor(below)); });
}

std::vector<ListBoxItem> DirListBox::linesFor(const QStringList &sorted) const
{
    std::vector<ListBoxItem> items;
    items.reserve(static_cast<std::size_t>(m_way.size() + sorted.size()));
    const QIcon openIcon = style()->standardIcon(QStyle::SP_DirOpenIcon);
    const QIcon closedIcon = style()->standardIcon(QStyle::SP_DirClosedIcon);
    for (qsizetype depth = 0; depth < m_way.size(); ++depth)
        items.push_back({shownName(m_way[depth]), static_cast<int>(depth), openIcon});
    for (const QString &name : sorted)
        items.push_back({name, static_cast<int>(m_way.size()), closedIcon});
    return items;
}

QString DirListBox::folderAt(int index) const
{
    const auto way = static_cast<int>(m_way.size());
    return index < way ? m_way.value(index) : inDosFolder(m_path, List(index));
}

// The user's choice, which must not end in the runtime's error box: what is shown may be gone by now.
void DirListBox::open(const QString &folder)
{
    QStringList names;
    try {
        names = m_folders->folderNames(folder);
    } catch (const RuntimeError &failure) {
        MsgBox(failure.text(), Buttons::OkOnly, BoxIcon::Information);
        return;
    }
    if (folder == m_path)
        return;
    display(folder, names);
    Q_EMIT Change();
}

void DirListBox::openChosen()
{
    if (ListIndex() >= 0)
        open(folderAt(ListIndex()));
}

void DirListBox::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Backspace) {
        ListBox::keyPressEvent(event);
        return;
    }
    guarded([this] {
        const QString parent = dosParent(m_path);
        if (!parent.isEmpty())
            open(parent);
    });
}

} // namespace vandrel

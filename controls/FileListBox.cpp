#include "controls/FileListBox.h"

#include <algorithm>
#include <utility>

#include <QDrag>
#include <QPointer>

#include "controls/ControlDrag.h"
#include "controls/FilesPicture.h"
#include "controls/SortedNames.h"
#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Both texts are case-folded. Goes back to the last "*" only, so that no pattern takes more than the product of the
// two lengths.
bool matchesFolded(QStringView name, QStringView pattern)
{
    qsizetype n = 0;
    qsizetype p = 0;
    qsizetype star = -1;
    qsizetype resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star >= 0) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*')
        ++p;
    return p == pattern.size();
}

QStringList foldedPatterns(const QString &patterns)
{
    QStringList folded;
    const QStringList parts = patterns.toCaseFolded().split(u';', Qt::SkipEmptyParts);
    for (const QString &part : parts)
        folded.append(part.trimmed());
    return folded;
}

bool isEverything(const QStringList &folded)
{
    return folded.contains(QStringLiteral("*.*")) || folded.contains(QStringLiteral("*"));
}

bool matchesAny(const QString &name, const QStringList &folded)
{
    const QString foldedName = name.toCaseFolded();
    return std::any_of(folded.begin(), folded.end(),
                       [&foldedName](const QString &pattern) { return matchesFolded(foldedName, pattern); });
}

QStringList matching(const QStringList &names, const QString &patterns)
{
    const QStringList folded = foldedPatterns(patterns);
    if (isEverything(folded))
        return names;
    QStringList matches;
    for (const QString &name : names) {
        if (matchesAny(name, folded))
            matches.append(name);
    }
    return matches;
}

} // namespace

bool matchesPattern(const QString &name, const QString &patterns)
{
    const QStringList folded = foldedPatterns(patterns);
    return isEverything(folded) || matchesAny(name, folded);
}

FileListBox::FileListBox(std::shared_ptr<LocalFolders> folders, QWidget *parent)
    : ListBox(parent), m_folders(std::move(folders))
{
    setAccessibleName(tr("Files"));
    m_path = m_folders->view().currentFolder(m_folders->view().currentDrive());
    Refresh();
    follow();
}

void FileListBox::setPath(const QString &path)
{
    const QString full = fullDosPath(m_folders->view(), path);
    if (full == m_path)
        return;
    const QStringList names = m_folders->fileNames(full);
    m_path = full;
    setLines(linesFor(sortedNames(names)));
    follow();
    Q_EMIT PathChange();
}

void FileListBox::setPattern(const QString &pattern)
{
    if (pattern == m_pattern)
        return;
    m_pattern = pattern;
    Refresh();
    Q_EMIT PatternChange();
}

void FileListBox::Refresh()
{
    QStringList names;
    try {
        names = m_folders->fileNames(m_path);
    } catch (const RuntimeError &) {
        names.clear();
    }
    updateLines(linesFor(sortedNames(names)));
}

void FileListBox::Drag(DragAction action)
{
    if (action == CancelDrag) {
        QDrag::cancel();
        return;
    }
    if (!isPulled())
        return;
    const FilesPicture picture(SelCount(), *this);
    const QPointer<FileListBox> self(this);
    dragControl(this, picture.pixmap(), picture.hotSpot());
    if (self)
        letGo();
}

void FileListBox::follow()
{
    m_watch = m_folders->watch(m_path, EntryKind::Files);
    onEvent(m_watch.get(), &FolderWatch::changed, this,
            [this](const QStringList &names) { updateLinesAtRest(linesFor(names)); });
}

std::vector<ListBoxItem> FileListBox::linesFor(const QStringList &sorted) const
{
    const QStringList shown = matching(sorted, m_pattern);
    std::vector<ListBoxItem> items;
    items.reserve(static_cast<std::size_t>(shown.size()));
    for (const QString &name : shown)
        items.push_back({name, 0, {}});
    return items;
}

} // namespace vandrel

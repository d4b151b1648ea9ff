#include "platform/desktop/QtCommonDialog.h"

#include <utility>

#include <QDir>
#include <QFile>
#include <QPointer>
#include <QScopeGuard>

#include "platform/desktop/DosFileDialog.h"
#include "platform/desktop/FileDialogFilters.h"
#include "runtime/EventGate.h"
#include "runtime/Events.h"

namespace vandrel {

QtCommonDialog::QtCommonDialog(std::shared_ptr<const DriveView> drives, QObject *parent)
    : CommonDialog(parent), m_drives(std::move(drives))
{ }

void QtCommonDialog::ShowOpen(QWidget *owner)
{
    show(owner, false);
}

void QtCommonDialog::ShowSave(QWidget *owner)
{
    show(owner, true);
}

void QtCommonDialog::show(QWidget *owner, bool save)
{
    const EventGate::Hold hold;
    // The owner may go, and the dialog with it, while it is open.
    const QPointer<QtCommonDialog> self(this);
    const QPointer<DosFileDialog> dialog(new DosFileDialog(m_drives, owner));
    const auto cleanUp = qScopeGuard([&dialog] { delete dialog.data(); });
    setUp(*dialog, save);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (!dialog)
        return;
    const QStringList chosen = dialog->selectedFiles();
    if (self && accepted && !chosen.isEmpty()) {
        FileName = m_drives->toDos(QFile::encodeName(chosen.first()));
        m_lastInitDir = InitDir;
        m_lastFolder = dialog->directory().absolutePath();
    }
}

void QtCommonDialog::setUp(DosFileDialog &dialog, bool save) const
{
    const QString usualTitle = save ? tr("Save As") : tr("Open");
    dialog.setWindowTitle(DialogTitle.isEmpty() ? usualTitle : DialogTitle);
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setDirectory(startFolder());
    setUpFilters(dialog, save);
    if (!FileName.isEmpty() && patternsOf(FileName).isEmpty())
        dialog.selectFile(QFile::decodeName(m_drives->toNative(FileName)));
}

void QtCommonDialog::setUpFilters(QFileDialog &dialog, bool save) const
{
    QList<FileDialogFilter> filters = fileDialogFilters(Filter);
    qsizetype first = 0;
    if (const QStringList patterns = patternsOf(FileName); !patterns.isEmpty()) {
        while (first < filters.size() && filters[first].patterns != patterns)
            ++first;
        if (first == filters.size()) {
            first = 0;
            filters.prepend({patterns.join(QStringLiteral("; ")), patterns});
        }
    }
    if (filters.isEmpty())
        return;
    QStringList shown;
    for (const FileDialogFilter &filter : std::as_const(filters))
        shown.append(toolkitFilter(filter));
    dialog.setNameFilters(shown);
    dialog.selectNameFilter(shown[first]);
    if (!save)
        return;
    dialog.setDefaultSuffix(defaultSuffix(filters[first]));
    onEvent(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog, filters](const QString &chosen) {
        // The toolkit's own dialog tells the description alone, a desktop's dialog the whole entry.
        for (const FileDialogFilter &filter : filters) {
            if (chosen == filter.description || chosen == toolkitFilter(filter))
                dialog.setDefaultSuffix(defaultSuffix(filter));
        }
    });
}

QString QtCommonDialog::startFolder() const
{
    if (!m_lastFolder.isEmpty() && m_lastInitDir == InitDir && QDir(m_lastFolder).exists())
        return m_lastFolder;
    if (!InitDir.isEmpty()) {
        try {
            const QString folder = QFile::decodeName(m_drives->toNative(InitDir));
            if (QDir(folder).exists())
                return folder;
        } catch (const RuntimeError &) {
            // A folder on a drive that this machine does not have is one that does not exist.
        }
    }
    return QDir::homePath();
}

} // namespace vandrel

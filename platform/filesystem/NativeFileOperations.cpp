#include "platform/filesystem/NativeFileOperations.h"

#include <QCoreApplication>

#include "platform/filesystem/FileBatch.h"
#include "platform/filesystem/FileCopier.h"

namespace vandrel {

namespace {

NamedFile fileOf(const DriveView &view, const QString &dosPath)
{
    return {view.toNative(dosPath), dosPath};
}

} // namespace

QString NativeFileOperations::CurDir() const
{
    return m_view->currentFolder(m_view->currentDrive());
}

void NativeFileOperations::ChDir(const QString &folder)
{
    m_view->setCurrentFolder(folder);
}

FileBatchResult NativeFileOperations::FileCopy(const std::vector<Copy> &files, QWidget &owner)
{
    FileBatch batch;
    batch.title = QCoreApplication::translate("FileOperations", "Copy");
    batch.text = QCoreApplication::translate("FileOperations", "Copying file %1 of %2:");
    for (const Copy &file : files)
        batch.names.append(file.source);
    batch.step = [view = m_view, files](int index, const FileProgress &goOn) {
        const Copy &file = files[static_cast<std::size_t>(index)];
        return copyFile(fileOf(*view, file.source), fileOf(*view, file.destination), goOn);
    };
    return runBatch(batch, owner);
}

FileBatchResult NativeFileOperations::Kill(const QStringList &files, QWidget &owner)
{
    FileBatch batch;
    batch.title = QCoreApplication::translate("FileOperations", "Delete");
    batch.text = QCoreApplication::translate("FileOperations", "Deleting file %1 of %2:");
    batch.names = files;
    batch.step = [view = m_view, files](int index, const FileProgress &) {
        deleteFile(fileOf(*view, files[index]));
        return true;
    };
    return runBatch(batch, owner);
}

} // namespace vandrel

#include "platform/filesystem/NativeFileOperations.h"

#include <QCoreApplication>

#include "platform/filesystem/CopyAhead.h"
#include "platform/filesystem/FileBatch.h"
#include "platform/filesystem/FileCopier.h"

namespace vandrel {

namespace {

NamedFile fileOf(const DriveView &view, const QString &dosPath)
{
    return {view.toNative(dosPath), dosPath};
}

// A name that is none is left to the batch, which tells of it.
std::unique_ptr<PreparedCopy> preparedCopy(const DriveView &view, const FileOperations::Copy &file)
{
    try {
        return prepareCopy(fileOf(view, file.source), fileOf(view, file.destination));
    } catch (const RuntimeError &) {
        return nullptr;
    }
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
    const auto ahead
        = std::make_shared<CopyAhead>(static_cast<int>(files.size()), [view = m_view, files](int index) {
              return preparedCopy(*view, files[static_cast<std::size_t>(index)]);
          });
    batch.step = [view = m_view, files, ahead](int index, const FileProgress &goOn) {
        if (const auto copy = ahead->take(index)) {
            if (copy->place())
                return true;
            ahead->drop();
        }
        const Copy &file = files[static_cast<std::size_t>(index)];
        return copyFile(fileOf(*view, file.source), fileOf(*view, file.destination), goOn);
    };
    batch.end = [ahead] { ahead->stop(); };
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

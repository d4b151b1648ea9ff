#include "platform/filesystem/NativeFolders.h"

#include <cerrno>
#include <utility>

#include "platform/filesystem/FolderReader.h"
#include "platform/filesystem/NativeFolderWatch.h"
#include "platform/filesystem/SystemFailure.h"
#include "runtime/AnswerWithin.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

QString labelOf(char letter, const QByteArray &root)
{
    if (letter == 'c')
        return QObject::tr("Home");
    if (root.isEmpty())
        return QObject::tr("All files");
    return dosName(root.mid(root.lastIndexOf('/') + 1));
}

RuntimeError folderFailure(int code, const QString &shownName)
{
    // A name that is gone, or that is a file by now, is a folder that does not exist.
    if (code == ENOENT || code == ENOTDIR)
        return RuntimeError(
            error::PathNotFound,
            QStringLiteral("%1. The folder \"%2\" does not exist any more. Choose another folder.")
                .arg(runtimeErrorText(error::PathNotFound), shownName));
    if (code == EACCES || code == EPERM)
        return RuntimeError(
            error::PermissionDenied,
            QStringLiteral("%1. You may not look into the folder \"%2\". Check its rights, or choose "
                           "another folder.")
                .arg(runtimeErrorText(error::PermissionDenied), shownName));
    return systemFailure(code, FileAction::Reading, shownName);
}

} // namespace

NativeFolders::NativeFolders(std::shared_ptr<DriveView> view, const DriveTable &table, int patience)
    : LocalFolders(std::move(view)), m_patience(patience)
{
    connect(&table, &DriveTable::changed, this, &LocalFolders::drivesChanged);
}

std::vector<LocalFolders::Drive> NativeFolders::drives() const
{
    std::vector<Drive> drives;
    for (const auto &[letter, root] : view().drives())
        drives.push_back({letter, labelOf(letter, root)});
    return drives;
}

QStringList NativeFolders::folderNames(const QString &dosFolder) const
{
    return names(dosFolder, EntryKind::Folders);
}

QStringList NativeFolders::fileNames(const QString &dosFolder) const
{
    return names(dosFolder, EntryKind::Files);
}

std::unique_ptr<FolderWatch> NativeFolders::watch(const QString &dosFolder, EntryKind kind)
{
    return std::make_unique<NativeFolderWatch>(*this, dosFolder, kind);
}

QStringList NativeFolders::names(const QString &dosFolder, EntryKind kind) const
{
    const QByteArray native = view().toNative(dosFolder);
    const std::optional<FolderNames> found = answerWithin(
        std::chrono::milliseconds(m_patience), [native, kind] { return readFolder(native, kind); });
    if (!found)
        throw folderFailure(ETIMEDOUT, dosFolder);
    if (found->failure != 0)
        throw folderFailure(found->failure, dosFolder);
    QStringList shown;
    shown.reserve(found->names.size());
    for (const QByteArray &name : found->names)
        shown.append(dosName(name));
    return shown;
}

} // namespace vandrel

#pragma once

#include <memory>
#include <vector>

#include "controls/LocalFolders.h"
#include "platform/filesystem/DriveTable.h"

namespace vandrel {

/// The drives and folders of this system. A folder is read on a thread of its own: when its file system does not
/// answer within the patience, the reader is left to itself and the caller gets Disk not ready (71).
class NativeFolders final : public LocalFolders
{
    Q_OBJECT

public:
    /// `table` keeps `view` in step with the system; its changes are passed on. `patience` is in milliseconds.
    NativeFolders(std::shared_ptr<DriveView> view, const DriveTable &table, int patience = 5000);

    std::vector<Drive> drives() const override;
    QStringList folderNames(const QString &dosFolder) const override;
    QStringList fileNames(const QString &dosFolder) const override;
    std::unique_ptr<FolderWatch> watch(const QString &dosFolder, EntryKind kind) override;

private:
    QStringList names(const QString &dosFolder, EntryKind kind) const;

    int m_patience;
};

} // namespace vandrel

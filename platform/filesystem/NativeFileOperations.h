#pragma once

#include <memory>
#include <utility>

#include "controls/DriveView.h"
#include "controls/FileOperations.h"

namespace vandrel {

/// The file operations of this system, on the drives of a view and with its current folders.
class NativeFileOperations final : public FileOperations
{
public:
    explicit NativeFileOperations(std::shared_ptr<DriveView> view) : m_view(std::move(view)) { }

    QString CurDir() const override;
    void ChDir(const QString &folder) override;
    FileBatchResult FileCopy(const std::vector<Copy> &files, QWidget &owner) override;
    FileBatchResult Kill(const QStringList &files, QWidget &owner) override;

private:
    std::shared_ptr<DriveView> m_view;
};

} // namespace vandrel

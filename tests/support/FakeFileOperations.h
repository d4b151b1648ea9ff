#pragma once

#include "controls/FileOperations.h"

namespace vandrel::test {

/// File operations that know the current folder and write down the changes of it; they touch no file.
class FakeFileOperations final : public FileOperations
{
public:
    QStringList folders;
    QString current = QStringLiteral("c:\\");

    QString CurDir() const override { return current; }
    void ChDir(const QString &folder) override
    {
        current = folder;
        folders.append(folder);
    }
    FileBatchResult FileCopy(const std::vector<Copy> &files, QWidget &) override
    {
        return {static_cast<int>(files.size()), {}, false};
    }
    FileBatchResult Kill(const QStringList &files, QWidget &) override
    {
        return {static_cast<int>(files.size()), {}, false};
    }
};

} // namespace vandrel::test

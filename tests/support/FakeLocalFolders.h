#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <QPointer>

#include "controls/LocalFolders.h"
#include "runtime/RuntimeError.h"

namespace vandrel::test {

/// Drives and folders kept in memory. "c:" and "z:" are there from the start, with empty roots; the current drive is
/// "c:".
class FakeLocalFolders final : public LocalFolders
{
    Q_OBJECT

public:
    FakeLocalFolders();

    /// Makes a folder with its files; the folders above it must exist.
    void add(const QString &dosFolder, const QStringList &files = {});
    void remove(const QString &dosFolder);
    /// What reading the folder raises from now on.
    void fail(const QString &dosFolder, const RuntimeError &failure);
    void addDrive(char letter, const QString &label);
    void removeDrive(char letter);
    /// Tells those who watch the folder what it holds now.
    void tellChange(const QString &dosFolder);

    std::vector<Drive> drives() const override { return m_drives; }
    QStringList folderNames(const QString &dosFolder) const override;
    QStringList fileNames(const QString &dosFolder) const override;
    std::unique_ptr<FolderWatch> watch(const QString &dosFolder, EntryKind kind) override;

private:
    explicit FakeLocalFolders(std::shared_ptr<DriveView> view);
    void check(const QString &dosFolder) const;
    QStringList sortedNow(const QString &dosFolder, EntryKind kind) const;

    std::shared_ptr<DriveView> m_drivesView;
    std::vector<Drive> m_drives;
    std::map<QString, QStringList> m_files;
    std::map<QString, RuntimeError> m_failures;
    struct Watch {
        QString folder;
        EntryKind kind;
        QPointer<FolderWatch> watch;
    };
    std::vector<Watch> m_watches;
};

} // namespace vandrel::test

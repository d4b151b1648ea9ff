#include "tests/support/FakeLocalFolders.h"

#include <algorithm>
#include <utility>

#include "controls/SortedNames.h"

namespace vandrel::test {

FakeLocalFolders::FakeLocalFolders() : FakeLocalFolders(std::make_shared<DriveView>()) { }

FakeLocalFolders::FakeLocalFolders(std::shared_ptr<DriveView> view)
    : LocalFolders(view), m_drivesView(std::move(view))
{
    addDrive('c', QStringLiteral("Home"));
    addDrive('z', QString());
}

void FakeLocalFolders::add(const QString &dosFolder, const QStringList &files)
{
    m_files[dosFolder] = files;
}

void FakeLocalFolders::remove(const QString &dosFolder)
{
    m_files.erase(dosFolder);
}

void FakeLocalFolders::fail(const QString &dosFolder, const RuntimeError &failure)
{
    m_failures.insert_or_assign(dosFolder, failure);
}

void FakeLocalFolders::addDrive(char letter, const QString &label)
{
    // The root of "z:" holds every other drive.
    m_drivesView->setDrive(letter, letter == 'z' ? QByteArray() : QByteArray("/drives/") + letter);
    m_drives.push_back({letter, label});
    add(QLatin1Char(letter) + QStringLiteral(":\\"));
    Q_EMIT drivesChanged();
}

void FakeLocalFolders::removeDrive(char letter)
{
    m_drivesView->removeDrive(letter);
    m_drives.erase(std::remove_if(m_drives.begin(), m_drives.end(),
                                  [letter](const Drive &drive) { return drive.letter == letter; }),
                   m_drives.end());
    remove(QLatin1Char(letter) + QStringLiteral(":\\"));
    Q_EMIT drivesChanged();
}

void FakeLocalFolders::check(const QString &dosFolder) const
{
    const auto failure = m_failures.find(dosFolder);
    if (failure != m_failures.end())
        throw failure->second;
    if (!m_files.contains(dosFolder))
        throw RuntimeError(error::PathNotFound);
}

QStringList FakeLocalFolders::folderNames(const QString &dosFolder) const
{
    check(dosFolder);
    QStringList names;
    for (const auto &[folder, files] : m_files) {
        if (dosParent(folder) == dosFolder)
            names.append(folder.sliced(folder.lastIndexOf(u'\\') + 1));
    }
    return names;
}

QStringList FakeLocalFolders::fileNames(const QString &dosFolder) const
{
    check(dosFolder);
    return m_files.at(dosFolder);
}

std::unique_ptr<FolderWatch> FakeLocalFolders::watch(const QString &dosFolder, EntryKind kind)
{
    auto watch = std::make_unique<FolderWatch>();
    m_watches.push_back({dosFolder, kind, watch.get()});
    return watch;
}

void FakeLocalFolders::tellChange(const QString &dosFolder)
{
    const std::vector<Watch> watches = m_watches;
    for (const Watch &each : watches) {
        if (each.watch && each.folder == dosFolder)
            Q_EMIT each.watch->changed(sortedNow(dosFolder, each.kind));
    }
}

QStringList FakeLocalFolders::sortedNow(const QString &dosFolder, EntryKind kind) const
{
    try {
        return sortedNames(kind == EntryKind::Files ? fileNames(dosFolder) : folderNames(dosFolder));
    } catch (const RuntimeError &) {
        return {};
    }
}

} // namespace vandrel::test

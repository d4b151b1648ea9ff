#include "platform/filesystem/NativeFolderWatch.h"

#include <algorithm>
#include <thread>
#include <utility>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QPromise>

#include "controls/SortedNames.h"
#include "platform/filesystem/FolderReader.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// What changes together is told together.
constexpr int leastPause = 100;
// Following a folder takes at most this part of the time.
constexpr int pausesPerReading = 10;
// Longer than a folder may take to be read before it is watched.
constexpr int recentSeconds = 10;

QStringList namesIn(const QByteArray &native, EntryKind kind)
{
    QStringList names;
    const FolderNames found = readFolder(native, kind);
    if (found.failure == 0) {
        for (const QByteArray &name : found.names)
            names.append(dosName(name));
    }
    return sortedNames(names);
}

// The folder's native path; empty for a drive that there is not.
QByteArray nativePath(const LocalFolders &folders, const QString &dosFolder)
{
    try {
        return folders.view().toNative(dosFolder);
    } catch (const RuntimeError &) {
        return {};
    }
}

} // namespace

NativeFolderWatch::NativeFolderWatch(const LocalFolders &folders, QString dosFolder, EntryKind kind)
    : m_folders(folders), m_dosFolder(std::move(dosFolder)), m_kind(kind)
{
    m_pause.setSingleShot(true);
    connect(&m_system, &QFileSystemWatcher::directoryChanged, this, &NativeFolderWatch::note);
    connect(&folders, &LocalFolders::drivesChanged, this, &NativeFolderWatch::note);
    connect(&m_pause, &QTimer::timeout, this, &NativeFolderWatch::read);
    connect(&m_reader, &QFutureWatcher<QStringList>::finished, this, &NativeFolderWatch::tell);
    arm();
}

// The system forgets a folder that goes, so that one that has come back is to be named again. What happened between the
// reading of the folder and now went unseen.
void NativeFolderWatch::arm()
{
    if (!m_system.directories().isEmpty())
        return;
    const QByteArray native = nativePath(m_folders, m_dosFolder);
    const QString path = QFile::decodeName(native);
    if (native.isEmpty() || QFile::encodeName(path) != native || !m_system.addPath(path))
        return;
    if (QFileInfo(path).lastModified() > QDateTime::currentDateTime().addSecs(-recentSeconds))
        note();
}

void NativeFolderWatch::note()
{
    m_hasChanged = true;
    if (!m_pause.isActive() && !m_reader.isRunning())
        m_pause.start(leastPause);
}

void NativeFolderWatch::read()
{
    if (!m_hasChanged)
        return;
    arm();
    m_hasChanged = false;
    m_reading.start();
    QPromise<QStringList> promise;
    m_reader.setFuture(promise.future());
    std::thread([promise = std::move(promise), native = nativePath(m_folders, m_dosFolder),
                 kind = m_kind]() mutable {
        promise.start();
        promise.addResult(native.isEmpty() ? QStringList() : namesIn(native, kind));
        promise.finish();
    }).detach();
}

void NativeFolderWatch::tell()
{
    Q_EMIT changed(m_reader.result());
    m_pause.start(std::max(leastPause, static_cast<int>(m_reading.elapsed()) * pausesPerReading));
}

} // namespace vandrel

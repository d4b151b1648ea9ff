#include "platform/web/PageFolders.h"

#include <memory>

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTimer>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// The engine's threads go on writing for a moment after a profile has gone.
constexpr int settling = 3000; // Milliseconds.

std::unique_ptr<QTemporaryDir> &root()
{
    static std::unique_ptr<QTemporaryDir> folder;
    return folder;
}

// Routines run in the reverse order of their announcement: this one after the engine's own, which comes later.
void removeRoot()
{
    root().reset();
}

} // namespace

QString newPageFolder()
{
    static int number = 0;
    if (!root()) {
        root() = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/vandrel-pages-XXXXXX"));
        qAddPostRoutine(removeRoot);
    }
    const QString folder = root()->filePath(QString::number(++number));
    if (!root()->isValid() || !QDir().mkpath(folder))
        throw RuntimeError(error::PathFileAccess);
    return folder;
}

void removePageFolder(const QString &folder)
{
    QTimer::singleShot(settling, qApp, [folder] { QDir(folder).removeRecursively(); });
}

} // namespace vandrel

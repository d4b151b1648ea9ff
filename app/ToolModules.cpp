#include "app/ToolModules.h"

#include <QCoreApplication>
#include <QPluginLoader>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

template<typename Interface>
Interface &rootObject(const QString &file)
{
    QPluginLoader loader(file);
    auto *const module = qobject_cast<Interface *>(loader.instance());
    if (!module) {
        const QString reason
            = loader.isLoaded() ? QStringLiteral("It is no module of this program.") : loader.errorString();
        throw RuntimeError(
            error::CannotCreateObject,
            QStringLiteral("A part of Vandrel cannot be loaded: %1\n%2\n\nInstall Vandrel again.")
                .arg(file, reason));
    }
    return *module;
}

} // namespace

QDir ToolModules::ownFolder()
{
    return QDir(QCoreApplication::applicationDirPath() + u'/'
                + QStringLiteral(VANDREL_LIBRARIES_FROM_PROGRAM));
}

ToolModule &ToolModules::load(const QString &name) const
{
    return rootObject<ToolModule>(fileOf(name));
}

std::unique_ptr<SharedAdapters> ToolModules::loadAdapters() const
{
    return rootObject<SharedAdaptersModule>(fileOf(QStringLiteral("common"))).makeAdapters();
}

QString ToolModules::fileOf(const QString &name) const
{
    return m_folder.filePath(QStringLiteral("vandrel-%1.so").arg(name));
}

} // namespace vandrel

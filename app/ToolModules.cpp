#include "app/ToolModules.h"

#include <QCoreApplication>
#include <QPluginLoader>

#include "runtime/RuntimeError.h"

namespace vandrel {

QDir ToolModules::ownFolder()
{
    return QDir(QCoreApplication::applicationDirPath() + u'/'
                + QStringLiteral(VANDREL_LIBRARIES_FROM_PROGRAM));
}

ToolModule &ToolModules::load(const QString &name) const
{
    const QString file = m_folder.filePath(QStringLiteral("vandrel-%1.so").arg(name));
    QPluginLoader loader(file);
    auto *const module = qobject_cast<ToolModule *>(loader.instance());
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

} // namespace vandrel

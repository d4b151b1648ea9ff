#include "piceditor/Resources.h"

#include <QFile>

#include "runtime/RuntimeError.h"

// A static library's resources are registered by hand, from outside any namespace.
static void registerPicEditorResources()
{
    Q_INIT_RESOURCE(piceditor);
}

namespace vandrel {

QByteArray picEditorResource(const QString &name)
{
    registerPicEditorResources();
    QFile file(QStringLiteral(":/piceditor/") + name);
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(error::FileNotFound);
    return file.readAll();
}

} // namespace vandrel

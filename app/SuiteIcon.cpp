#include "launcher/SuiteIcon.h"

#include <QSize>

// A static library's resources are registered by hand, from outside any namespace.
static void registerResources()
{
    Q_INIT_RESOURCE(vandrel);
}

namespace vandrel {

QIcon suiteIcon()
{
    registerResources();
    QIcon icon;
    // A window manager is sent every size there is, so the largest ones would only cost time at the start.
    for (const int size : {16, 22, 24, 32, 48, 64, 96, 128})
        icon.addFile(QStringLiteral(":/vandrel/icon-%1.png").arg(size), QSize(size, size));
    return icon;
}

} // namespace vandrel

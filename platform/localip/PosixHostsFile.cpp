#include <QFile>

#include "platform/localip/HostsFile.h"

namespace vandrel {

QByteArray systemHostsFile()
{
    constexpr qint64 most = 1'000'000;
    QFile file(QStringLiteral("/etc/hosts"));
    return file.open(QIODevice::ReadOnly) ? file.read(most) : QByteArray();
}

} // namespace vandrel

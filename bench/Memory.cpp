#include "Memory.h"

#include <QFile>

namespace vandrel::bench {

long mostResidentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const QByteArray key("VmHWM:");
    return text.mid(text.indexOf(key) + key.size()).trimmed().split(' ').first().toLong();
}

long forgetMostResident()
{
    QFile references(QStringLiteral("/proc/self/clear_refs"));
    if (references.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        references.write("5");
    return mostResidentKilobytes();
}

} // namespace vandrel::bench

#include "controls/LocalFolders.h"

namespace vandrel {

namespace {

bool namesADrive(const QString &path)
{
    return path.size() >= 2 && path[1] == u':';
}

// Paths under no drive are native ones.
QChar separatorOf(const QString &folder)
{
    return folder.startsWith(u'/') ? u'/' : u'\\';
}

} // namespace

QString fullDosPath(const DriveView &view, const QString &typed)
{
    const QByteArray native = view.toNative(typed);
    if (typed.startsWith(u'/'))
        return view.toDos(native);
    return view.toDosOn(namesADrive(typed) ? typed[0].toLatin1() : view.currentDrive(), native);
}

QString inDosFolder(const QString &folder, const QString &name)
{
    const QChar separator = separatorOf(folder);
    return folder.endsWith(separator) ? folder + name : folder + separator + name;
}

QString dosParent(const QString &folder)
{
    const QChar separator = separatorOf(folder);
    const qsizetype last = folder.lastIndexOf(separator);
    if (last < 0 || last + 1 == folder.size())
        return {};
    // A root keeps its separator.
    const bool isBelowRoot = folder.indexOf(separator) == last;
    return folder.left(isBelowRoot ? last + 1 : last);
}

} // namespace vandrel

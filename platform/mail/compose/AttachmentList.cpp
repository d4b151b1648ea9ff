#include "platform/mail/compose/AttachmentList.h"

namespace vandrel {

namespace {

bool beginsPath(const QString &text)
{
    const bool drive = text.size() >= 2 && text[1] == u':' && text[0].unicode() < 0x80 && text[0].isLetter();
    return drive || text.startsWith(u'/');
}

} // namespace

QStringList attachmentPaths(const QString &list)
{
    if (list.isEmpty())
        return {};
    QStringList paths;
    const QString trimmed = list.endsWith(u';') ? list.chopped(1) : list;
    for (const QString &piece : trimmed.split(u';')) {
        if (paths.isEmpty() || beginsPath(piece))
            paths += piece;
        else
            paths.last() += u';' + piece;
    }
    return paths;
}

} // namespace vandrel

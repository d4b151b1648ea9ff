#include "texteditor/TextEditorControls.h"

#include <QFontDatabase>

namespace vandrel {

QStringList screenFontFamilies()
{
    QStringList families;
    for (const QString &family : QFontDatabase::families()) {
        const qsizetype maker = family.endsWith(u']') ? family.lastIndexOf(u" [") : -1;
        families.append(maker > 0 ? family.left(maker) : family);
    }
    families.removeDuplicates();
    return families;
}

} // namespace vandrel

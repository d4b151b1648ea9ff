#include "platform/desktop/FileDialogFilters.h"

#include <algorithm>

namespace vandrel {

namespace {

bool isPattern(const QString &text)
{
    return text.contains(u'*') || text.contains(u'?');
}

QStringList splitPatterns(const QString &text)
{
    QStringList patterns;
    for (const QString &pattern : text.split(u';', Qt::SkipEmptyParts)) {
        if (!pattern.trimmed().isEmpty())
            patterns.append(pattern.trimmed());
    }
    return patterns;
}

} // namespace

QStringList patternsOf(const QString &fileName)
{
    const QStringList patterns = splitPatterns(fileName);
    return std::all_of(patterns.begin(), patterns.end(), isPattern) ? patterns : QStringList();
}

QList<FileDialogFilter> fileDialogFilters(const QString &filter)
{
    const QStringList fields = filter.split(u'|');
    QList<FileDialogFilter> filters;
    for (qsizetype field = 0; field < fields.size(); field += 2) {
        const QString description = fields[field].trimmed();
        QStringList patterns = splitPatterns(fields.value(field + 1));
        if (patterns.isEmpty())
            patterns = patternsOf(description);
        if (!patterns.isEmpty())
            filters.append({description.isEmpty() ? patterns.join(u';') : description, patterns});
    }
    return filters;
}

QString toolkitFilter(const FileDialogFilter &filter)
{
    QStringList patterns;
    for (const QString &pattern : filter.patterns) {
        for (const QString &variant : {pattern, pattern.toLower(), pattern.toUpper()}) {
            if (!patterns.contains(variant))
                patterns.append(variant);
        }
    }
    return QStringLiteral("%1 (%2)").arg(filter.description, patterns.join(u' '));
}

QString defaultSuffix(const FileDialogFilter &filter)
{
    const QString first = filter.patterns.value(0);
    if (!first.startsWith(u"*."))
        return {};
    const QString suffix = first.mid(2);
    return isPattern(suffix) ? QString() : suffix;
}

} // namespace vandrel

#include "controls/SortedNames.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vandrel {

QStringList sortedNames(const QStringList &names)
{
    std::vector<std::pair<QString, QString>> keyed;
    keyed.reserve(static_cast<std::size_t>(names.size()));
    for (const QString &name : names)
        keyed.emplace_back(name.toCaseFolded(), name);
    std::sort(keyed.begin(), keyed.end());
    QStringList sorted;
    sorted.reserve(names.size());
    for (auto &[key, name] : keyed)
        sorted.append(std::move(name));
    return sorted;
}

} // namespace vandrel

#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace vandrel {

/// One entry of a file dialog's list of filters.
struct FileDialogFilter {
    QString description;
    /// Patterns such as "*.rtf".
    QStringList patterns;

    bool operator==(const FileDialogFilter &) const = default;
};

/// The entries of a Filter text: descriptions and patterns in turn, separated by bars, the patterns of an entry by
/// semicolons. An entry without patterns whose description reads as patterns is described by them; any other
/// entry without patterns is left out.
QList<FileDialogFilter> fileDialogFilters(const QString &filter);

/// The patterns that a FileName consists of; empty when it is a name.
QStringList patternsOf(const QString &fileName);

/// The entry in the toolkit's form. Patterns are given in both cases, for dialogs that mind it.
QString toolkitFilter(const FileDialogFilter &filter);

/// The extension that a name without one gets under that entry, without its point; "" when the entry has no
/// single one to give.
QString defaultSuffix(const FileDialogFilter &filter);

} // namespace vandrel

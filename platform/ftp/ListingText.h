#pragma once

#include <vector>

#include <QString>

#include "platform/ftp/ListingEntry.h"

namespace vandrel {

/// An entry as a line of the control's listing, without a line end: the name, two blanks, "/", then kind, size in
/// octets and date in columns of fixed width, and where a link leads. The first "/" of the line is the one behind
/// the name.
QString listingLine(const ListingEntry &entry);

/// The lines of a listing, made as the entries come, so that a long one has only to be put in order at its end.
class ListingLines
{
public:
    void add(const ListingEntry &entry);
    /// All lines as people look for them, each ended by CR LF: folders first, each kind by name without regard to case.
    QString inOrder();

private:
    struct Line {
        bool isFolder;
        QString key;
        QString text;
    };
    std::vector<Line> m_lines;
};

} // namespace vandrel

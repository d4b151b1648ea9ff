#pragma once

#include <vector>

#include <QString>

#include "platform/ftp/ListingEntry.h"

namespace vandrel {

/// An entry as a line of the control's listing, without a line end: the name, two blanks, "/", then kind, size in
/// octets and date in columns of fixed width, and where a link leads. The first "/" of the line is the one behind
/// the name.
QString listingLine(const ListingEntry &entry);

/// The lines of all entries as people look for them, each ended by CR LF: folders first, each kind by name without
/// regard to case.
QString listingText(const std::vector<ListingEntry> &entries);

} // namespace vandrel

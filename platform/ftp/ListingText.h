#pragma once

#include <QString>

#include "platform/ftp/ListingEntry.h"

namespace vandrel {

/// An entry as a line of the control's listing, without a line end: the name, two blanks, "/", then kind, size in
/// octets and date in columns of fixed width, and where a link leads. The first "/" of the line is the one behind
/// the name.
QString listingLine(const ListingEntry &entry);

} // namespace vandrel

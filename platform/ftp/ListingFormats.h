#pragma once

#include <optional>

#include <QByteArrayView>
#include <QDate>

#include "platform/ftp/ListingEntry.h"

namespace vandrel {

/// One line of a listing, without its line end, in one of the formats that servers write. No entry for a line that
/// does not follow the format. The entry's name is what the line holds, blanks at either end included.

/// The machine's form of RFC 3659 (MLSD). The folder itself and its parent are entries of Kind::Folder named "."
/// and "..".
std::optional<ListingEntry> machineEntry(QByteArrayView line);

/// A line as "ls -l" writes it, in the variants of servers and languages: with or without group, number of links
/// and owner, with access lists, with month names, day before month, or ISO dates. A time without a year is
/// within the twelve months up to the day after `today`.
std::optional<ListingEntry> unixEntry(QByteArrayView line, QDate today);

/// A line as DOS-style servers write it: date, time, size or "<DIR>", name.
std::optional<ListingEntry> dosEntry(QByteArrayView line);

} // namespace vandrel

#pragma once

#include <QByteArray>
#include <QDateTime>

namespace vandrel {

/// One entry of a server's listing.
struct ListingEntry {
    enum class Kind { File, Folder, Link, Other };

    /// The name's octets, never empty.
    QByteArray name;
    Kind kind = Kind::Other;
    /// In octets; -1 where it is not told or means nothing.
    qint64 size = -1;
    /// The day on which it was last changed; invalid where that is not told. In local time when the server names a
    /// moment, as the server writes it otherwise.
    QDate date;
    /// The time of that day; invalid where the server gave the day alone.
    QTime time;
    /// Where a link leads, when that is told.
    QByteArray target;
};

} // namespace vandrel

#pragma once

#include <vector>

#include <QByteArray>
#include <QByteArrayView>
#include <QDate>

#include "platform/ftp/ListingEntry.h"

namespace vandrel {

/// Turns a server's listing, as it arrives, into entries. Whatever the octets are, every line that could be a name
/// becomes an entry; the folder itself, its parent, and the lines around the entries do not.
///
/// Holds no more than one incomplete line. Usable on any one thread.
class ListingParser
{
public:
    /// What was asked of the server: MLSD, LIST or NLST.
    enum class Format { Machine, Long, Names };

    /// Lines longer than this are passed over and counted.
    static constexpr qsizetype longestLine = 16 * 1024;

    /// `today` tells the year of dates without one.
    ListingParser(Format format, QDate today) : m_format(format), m_today(today) { }

    /// The entries of the lines that these octets complete.
    std::vector<ListingEntry> add(QByteArrayView octets);
    /// The entry of a last line without an end, if there is one.
    std::vector<ListingEntry> finish();

    /// How many lines were too long to be read.
    qsizetype skippedLines() const { return m_skippedLines; }

private:
    void takeLine(QByteArrayView line, std::vector<ListingEntry> &entries) const;
    void keep(QByteArrayView part);

    Format m_format;
    QDate m_today;
    QByteArray m_partial;
    bool m_skipping = false;
    qsizetype m_skippedLines = 0;
};

} // namespace vandrel

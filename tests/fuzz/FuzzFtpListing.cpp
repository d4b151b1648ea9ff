// Reads any octets as listings, in pieces. Every entry's line must give its name back.
#include <cstdint>

#include "platform/ftp/ListingParser.h"
#include "platform/ftp/ListingText.h"
#include "platform/ftp/RemoteNames.h"

using namespace vandrel;

namespace {

void check(const std::vector<ListingEntry> &entries)
{
    for (const ListingEntry &entry : entries) {
        const QString line = listingLine(entry);
        const qsizetype slash = line.indexOf(u'/');
        if (slash < 3)
            qFatal("a line has no name before its slash");
        const auto sent = sentRemoteName(QStringView(line).first(slash - 2));
        if (!sent || *sent != entry.name)
            qFatal("a name does not survive its line");
        for (const QChar character : line) {
            if (character < u' ')
                qFatal("a line holds a control character");
        }
    }
}

void read(ListingParser::Format format, const QByteArray &listing, qsizetype piece)
{
    ListingParser parser(format, QDate(2024, 2, 29));
    for (qsizetype at = 0; at < listing.size(); at += piece)
        check(parser.add(QByteArrayView(listing).sliced(at, std::min(piece, listing.size() - at))));
    check(parser.finish());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray listing(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    for (const auto format :
         {ListingParser::Format::Machine, ListingParser::Format::Long, ListingParser::Format::Names}) {
        read(format, listing, std::max<qsizetype>(1, listing.size()));
        read(format, listing, 7);
    }
    return 0;
}

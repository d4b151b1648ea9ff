#include "platform/ftp/ListingText.h"

#include "platform/ftp/RemoteNames.h"

namespace vandrel {

namespace {

// "999,999,999,999" fits.
constexpr qsizetype sizeWidth = 15;
constexpr qsizetype dateWidth = 16;

QLatin1String kindText(ListingEntry::Kind kind)
{
    switch (kind) {
    case ListingEntry::Kind::File:
        return QLatin1String("File  ");
    case ListingEntry::Kind::Folder:
        return QLatin1String("Folder");
    case ListingEntry::Kind::Link:
        return QLatin1String("Link  ");
    case ListingEntry::Kind::Other:
        break;
    }
    return QLatin1String("Other ");
}

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, u'0');
}

// Put together by hand: a formatted date would take most of the time of a long listing.
QString dateText(const ListingEntry &entry)
{
    if (!entry.modified.isValid())
        return {};
    const QDate date = entry.modified.date();
    QString text = QString::number(date.year()).rightJustified(4, u'0') + u'-' + twoDigits(date.month())
        + u'-' + twoDigits(date.day());
    if (entry.hasTime) {
        const QTime time = entry.modified.time();
        text += u' ' + twoDigits(time.hour()) + u':' + twoDigits(time.minute());
    }
    return text;
}

QString sizeText(const ListingEntry &entry)
{
    // What a folder or a link occupies says nothing about what it leads to.
    const bool isTold = entry.size >= 0
        && (entry.kind == ListingEntry::Kind::File || entry.kind == ListingEntry::Kind::Other);
    QString text;
    if (isTold) {
        text = QString::number(entry.size);
        for (qsizetype at = text.size() - 3; at > 0; at -= 3)
            text.insert(at, u',');
    }
    return text.rightJustified(sizeWidth);
}

} // namespace

QString listingLine(const ListingEntry &entry)
{
    QString line = shownRemoteName(entry.name);
    line += QLatin1String("  /") + kindText(entry.kind) + u' ' + sizeText(entry) + QLatin1String("  ")
        + dateText(entry).leftJustified(dateWidth);
    if (!entry.target.isEmpty())
        line += QLatin1String("  -> ") + shownRemotePath(entry.target);
    return line;
}

} // namespace vandrel

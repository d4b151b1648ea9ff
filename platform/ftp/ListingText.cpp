#include "platform/ftp/ListingText.h"

#include <algorithm>
#include <tuple>

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
    if (!entry.date.isValid())
        return {};
    int year = 0;
    int month = 0;
    int day = 0;
    entry.date.getDate(&year, &month, &day);
    QString text
        = QString::number(year).rightJustified(4, u'0') + u'-' + twoDigits(month) + u'-' + twoDigits(day);
    if (entry.time.isValid())
        text += u' ' + twoDigits(entry.time.hour()) + u':' + twoDigits(entry.time.minute());
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

void ListingLines::add(const ListingEntry &entry)
{
    m_lines.push_back({entry.kind == ListingEntry::Kind::Folder, shownRemoteName(entry.name).toCaseFolded(),
                       listingLine(entry)});
}

QString ListingLines::inOrder()
{
    const auto isBefore = [](const Line &one, const Line &other) {
        return std::tie(other.isFolder, one.key, one.text) < std::tie(one.isFolder, other.key, other.text);
    };
    // Many a server lists in this order.
    if (!std::is_sorted(m_lines.begin(), m_lines.end(), isBefore))
        std::sort(m_lines.begin(), m_lines.end(), isBefore);
    constexpr QLatin1String lineEnd("\r\n");
    qsizetype size = 0;
    for (const Line &line : m_lines)
        size += line.text.size() + lineEnd.size();
    QString text;
    text.reserve(size);
    for (const Line &line : m_lines)
        text.append(line.text).append(lineEnd);
    return text;
}

} // namespace vandrel

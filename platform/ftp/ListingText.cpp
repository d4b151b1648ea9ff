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

// Lines are put together by hand: what formats in general would take most of the time of a long listing.
void appendNumber(QString &line, qint64 number, int leastDigits)
{
    constexpr int base = 10;
    if (leastDigits > 1 || number >= base)
        appendNumber(line, number / base, leastDigits - 1);
    line += QChar(u'0' + static_cast<char16_t>(number % base));
}

void appendGrouped(QString &line, qint64 number)
{
    constexpr int group = 1000;
    if (number < group) {
        appendNumber(line, number, 1);
        return;
    }
    appendGrouped(line, number / group);
    line += u',';
    appendNumber(line, number % group, 3);
}

void appendSize(QString &line, const ListingEntry &entry)
{
    constexpr QLatin1String blanks("               ");
    static_assert(blanks.size() == sizeWidth);
    const qsizetype from = line.size();
    // What a folder or a link occupies says nothing about what it leads to.
    if (entry.size >= 0
        && (entry.kind == ListingEntry::Kind::File || entry.kind == ListingEntry::Kind::Other))
        appendGrouped(line, entry.size);
    const qsizetype missing = from + sizeWidth - line.size();
    if (missing > 0)
        line.insert(from, blanks.first(missing));
}

void appendDate(QString &line, const ListingEntry &entry)
{
    const qsizetype end = line.size() + dateWidth;
    if (entry.date.isValid()) {
        int year = 0;
        int month = 0;
        int day = 0;
        entry.date.getDate(&year, &month, &day);
        appendNumber(line, std::max(0, year), 4);
        line += u'-';
        appendNumber(line, month, 2);
        line += u'-';
        appendNumber(line, day, 2);
        if (entry.time.isValid()) {
            line += u' ';
            appendNumber(line, entry.time.hour(), 2);
            line += u':';
            appendNumber(line, entry.time.minute(), 2);
        }
    }
    line.resize(std::max(end, line.size()), u' ');
}

QString lineWith(const QString &name, const ListingEntry &entry)
{
    constexpr qsizetype columns = 64;
    QString line;
    line.reserve(name.size() + columns);
    line += name;
    line += QLatin1String("  /");
    line += kindText(entry.kind);
    line += u' ';
    appendSize(line, entry);
    line += QLatin1String("  ");
    appendDate(line, entry);
    if (!entry.target.isEmpty())
        line += QLatin1String("  -> ") + shownRemotePath(entry.target);
    return line;
}

} // namespace

QString listingLine(const ListingEntry &entry)
{
    return lineWith(shownRemoteName(entry.name), entry);
}

void ListingLines::add(const ListingEntry &entry)
{
    const QString name = shownRemoteName(entry.name);
    m_lines.push_back({entry.kind == ListingEntry::Kind::Folder, name.toCaseFolded(), lineWith(name, entry)});
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

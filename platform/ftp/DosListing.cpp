#include <algorithm>

#include "platform/ftp/ListingFormats.h"

namespace vandrel {

namespace {

using ListedKind = ListingEntry::Kind;

// Walks a line column by column.
class Columns
{
public:
    explicit Columns(QByteArrayView line) : m_line(line) { }

    QByteArrayView next()
    {
        skipBlanks();
        const qsizetype from = m_at;
        while (m_at < m_line.size() && m_line[m_at] != ' ')
            ++m_at;
        return m_line.sliced(from, m_at - from);
    }

    qsizetype skipBlanks(qsizetype most = -1)
    {
        qsizetype skipped = 0;
        while (m_at < m_line.size() && m_line[m_at] == ' ' && skipped != most) {
            ++m_at;
            ++skipped;
        }
        return skipped;
    }

    QByteArrayView rest() const { return m_line.sliced(m_at); }

private:
    QByteArrayView m_line;
    qsizetype m_at = 0;
};

int numberOf(QByteArrayView digits)
{
    const bool isNumber = !digits.isEmpty() && digits.size() <= 4
        && std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? digits.toInt() : -1;
}

int fullYear(QByteArrayView digits)
{
    const int year = numberOf(digits);
    if (year < 0 || digits.size() == 4)
        return year;
    return year < 70 ? 2000 + year : 1900 + year;
}

// "01-31-24", "01-31-2024", "31.01.2024" or "2024-01-31".
QDate dateOf(QByteArrayView word)
{
    const char separator = word.contains('.') ? '.' : word.contains('/') ? '/' : '-';
    const qsizetype first = word.indexOf(separator);
    const qsizetype second = first < 0 ? -1 : word.indexOf(separator, first + 1);
    if (second < 0)
        return {};
    const QByteArrayView a = word.first(first);
    const QByteArrayView b = word.sliced(first + 1, second - first - 1);
    const QByteArrayView c = word.sliced(second + 1);
    if (a.size() == 4)
        return {fullYear(a), numberOf(b), numberOf(c)};
    if (separator == '.')
        return {fullYear(c), numberOf(b), numberOf(a)};
    return {fullYear(c), numberOf(a), numberOf(b)};
}

// "03:19PM", "3:19p" or "15:19", perhaps with seconds.
QTime timeOf(QByteArrayView word)
{
    const qsizetype colon = word.indexOf(':');
    if (colon < 1 || word.size() < colon + 3)
        return {};
    int hour = numberOf(word.first(colon));
    const int minute = numberOf(word.sliced(colon + 1, 2));
    const char half = word.contains('P') || word.contains('p') ? 'p'
        : word.contains('A') || word.contains('a')             ? 'a'
                                                               : ' ';
    if (half != ' ' && (hour < 1 || hour > 12))
        return {};
    if (half != ' ')
        hour = hour % 12 + (half == 'p' ? 12 : 0);
    return {hour, minute};
}

bool isHalfOfDay(QByteArrayView word)
{
    return word.compare("AM", Qt::CaseInsensitive) == 0 || word.compare("PM", Qt::CaseInsensitive) == 0;
}

bool takeSizeOrKind(ListingEntry &entry, QByteArrayView word)
{
    if (word.startsWith('<') && word.endsWith('>')) {
        entry.kind = word == "<DIR>" ? ListedKind::Folder : ListedKind::Link;
        return true;
    }
    QByteArray digits = word.toByteArray();
    digits.replace(',', "");
    bool isNumber = false;
    const qint64 size = digits.toLongLong(&isNumber);
    entry.kind = ListedKind::File;
    entry.size = isNumber && size >= 0 ? size : -1;
    return entry.size >= 0;
}

// A link's line ends in " [target]".
void takeTarget(ListingEntry &entry)
{
    const qsizetype bracket = entry.name.lastIndexOf(" [");
    if (bracket <= 0 || !entry.name.endsWith(']'))
        return;
    entry.target = entry.name.mid(bracket + 2).chopped(1);
    entry.name.truncate(bracket);
}

} // namespace

std::optional<ListingEntry> dosEntry(QByteArrayView line)
{
    // Behind "<DIR>" the names stand where the sizes end.
    constexpr qsizetype blanksBehindFolder = 10;
    Columns columns(line);
    const QDate date = dateOf(columns.next());
    if (!date.isValid())
        return {};
    QByteArray timeText = columns.next().toByteArray();
    QByteArrayView sizeOrKind = columns.next();
    if (isHalfOfDay(sizeOrKind)) {
        timeText += sizeOrKind;
        sizeOrKind = columns.next();
    }
    const QTime time = timeOf(timeText);
    if (!time.isValid())
        return {};
    ListingEntry entry;
    if (!takeSizeOrKind(entry, sizeOrKind))
        return {};
    columns.skipBlanks(entry.kind == ListedKind::File ? 1 : blanksBehindFolder);
    if (columns.rest().isEmpty())
        return {};
    entry.name = columns.rest().toByteArray();
    if (entry.kind == ListedKind::Link)
        takeTarget(entry);
    entry.date = date;
    entry.time = time;
    return entry;
}

} // namespace vandrel

#include <QTimeZone>

#include "platform/ftp/ListingFormats.h"

namespace vandrel {

namespace {

using ListedKind = ListingEntry::Kind;

bool isText(QByteArrayView octets, QByteArrayView text)
{
    return octets.compare(text, Qt::CaseInsensitive) == 0;
}

bool startsWith(QByteArrayView octets, QByteArrayView text)
{
    return octets.size() >= text.size() && isText(octets.first(text.size()), text);
}

int numberAt(QByteArrayView digits, qsizetype from, qsizetype length)
{
    int number = 0;
    for (const char digit : digits.sliced(from, length)) {
        if (digit < '0' || digit > '9')
            return -1;
        number = number * 10 + (digit - '0');
    }
    return number;
}

// A moment as "YYYYMMDDHHMMSS", perhaps with a fraction, in universal time.
QDateTime momentOf(QByteArrayView value)
{
    constexpr qsizetype length = 14;
    if (value.size() < length)
        return {};
    const QDate date(numberAt(value, 0, 4), numberAt(value, 4, 2), numberAt(value, 6, 2));
    const QTime time(numberAt(value, 8, 2), numberAt(value, 10, 2), numberAt(value, 12, 2));
    if (!date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::UTC).toLocalTime();
}

void takeType(ListingEntry &entry, QByteArrayView value, QByteArrayView name)
{
    constexpr QByteArrayView link = "OS.unix=slink";
    if (isText(value, "file")) {
        entry.kind = ListedKind::File;
    } else if (isText(value, "dir")) {
        entry.kind = ListedKind::Folder;
    } else if (isText(value, "cdir") || isText(value, "pdir")) {
        entry.kind = ListedKind::Folder;
        entry.name = isText(value, "cdir") ? "." : "..";
        return;
    } else if (startsWith(value, link) || startsWith(value, "OS.unix=symlink")) {
        entry.kind = ListedKind::Link;
        const qsizetype colon = value.indexOf(':');
        if (colon >= 0)
            entry.target = value.sliced(colon + 1).toByteArray();
    }
    entry.name = name.toByteArray();
}

void takeFact(ListingEntry &entry, QByteArrayView fact, QByteArrayView name)
{
    const qsizetype equals = fact.indexOf('=');
    if (equals < 0)
        return;
    const QByteArrayView key = fact.first(equals);
    const QByteArrayView value = fact.sliced(equals + 1);
    if (isText(key, "type")) {
        takeType(entry, value, name);
    } else if (isText(key, "size")) {
        bool isNumber = false;
        const qint64 size = value.toLongLong(&isNumber);
        entry.size = isNumber && size >= 0 ? size : -1;
    } else if (isText(key, "modify")) {
        const QDateTime moment = momentOf(value);
        entry.date = moment.date();
        entry.time = moment.time();
    }
}

} // namespace

std::optional<ListingEntry> machineEntry(QByteArrayView line)
{
    const qsizetype blank = line.indexOf(' ');
    if (blank < 0 || blank + 1 == line.size())
        return {};
    const QByteArrayView facts = line.first(blank);
    if (!facts.isEmpty() && !facts.contains('='))
        return {};
    ListingEntry entry;
    const QByteArrayView name = line.sliced(blank + 1);
    entry.name = name.toByteArray();
    for (qsizetype from = 0; from < facts.size();) {
        qsizetype end = facts.indexOf(';', from);
        if (end < 0)
            end = facts.size();
        takeFact(entry, facts.sliced(from, end - from), name);
        from = end + 1;
    }
    return entry;
}

} // namespace vandrel

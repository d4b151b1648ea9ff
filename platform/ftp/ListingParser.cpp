#include "platform/ftp/ListingParser.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/ftp/ListingFormats.h"

namespace vandrel {

namespace {

// The line that "ls -l" writes before its entries.
bool isTotal(QByteArrayView line)
{
    constexpr QByteArrayView total = "total ";
    if (!line.startsWith(total))
        return false;
    const QByteArrayView rest = line.sliced(total.size()).trimmed();
    return !rest.isEmpty() && rest[0] >= '0' && rest[0] <= '9' && !rest.contains(' ');
}

std::optional<ListingEntry> bareName(QByteArrayView line)
{
    if (line.isEmpty())
        return {};
    ListingEntry entry;
    entry.name = line.toByteArray();
    return entry;
}

std::optional<ListingEntry> longEntry(QByteArrayView line, QDate today)
{
    if (auto entry = unixEntry(line, today))
        return entry;
    if (auto entry = dosEntry(line))
        return entry;
    return isTotal(line) ? std::nullopt : bareName(line);
}

} // namespace

std::vector<ListingEntry> ListingParser::add(QByteArrayView octets)
{
    std::vector<ListingEntry> entries;
    while (!octets.isEmpty()) {
        const qsizetype end = octets.indexOf('\n');
        const QByteArrayView part = end < 0 ? octets : octets.first(end);
        octets = end < 0 ? QByteArrayView() : octets.sliced(end + 1);
        if (end < 0 || m_skipping || !m_partial.isEmpty())
            keep(part);
        else if (part.size() <= longestLine)
            takeLine(part, entries);
        else
            ++m_skippedLines;
        if (end >= 0 && !m_skipping && !m_partial.isEmpty())
            takeLine(std::exchange(m_partial, {}), entries);
        if (end >= 0)
            m_skipping = false;
    }
    return entries;
}

std::vector<ListingEntry> ListingParser::finish()
{
    std::vector<ListingEntry> entries;
    if (!m_partial.isEmpty())
        takeLine(std::exchange(m_partial, {}), entries);
    m_skipping = false;
    return entries;
}

void ListingParser::keep(QByteArrayView part)
{
    if (m_skipping)
        return;
    if (m_partial.size() + part.size() > longestLine) {
        m_partial.clear();
        m_skipping = true;
        ++m_skippedLines;
    } else {
        m_partial += part;
    }
}

void ListingParser::takeLine(QByteArrayView line, std::vector<ListingEntry> &entries) const
{
    if (line.endsWith('\r'))
        line.chop(1);
    std::optional<ListingEntry> entry;
    switch (m_format) {
    case Format::Machine:
        entry = machineEntry(line);
        break;
    case Format::Long:
        entry = longEntry(line, m_today);
        break;
    case Format::Names:
        entry = bareName(line);
        break;
    }
    if (entry && entry->name != "." && entry->name != "..")
        entries.push_back(std::move(*entry));
}

} // namespace vandrel

#include <algorithm>
#include <array>
#include <string_view>

#include <QString>

#include "platform/ftp/ListingFormats.h"

namespace vandrel {

namespace {

using ListedKind = ListingEntry::Kind;

// Enough for every column before the name, whatever blanks an owner's name holds.
constexpr std::size_t maximumWords = 24;

struct Word {
    QByteArrayView text;
    qsizetype end = 0; ///< the position behind the word
};

/// The first words of a line.
class Words
{
public:
    void add(Word word) { m_words[m_size++] = word; }
    std::size_t size() const { return m_size; }
    const Word &operator[](std::size_t at) const { return m_words[at]; }

private:
    std::array<Word, maximumWords> m_words;
    std::size_t m_size = 0;
};

Words wordsOf(QByteArrayView line)
{
    Words words;
    qsizetype at = 0;
    while (words.size() < maximumWords) {
        while (at < line.size() && line[at] == ' ')
            ++at;
        if (at == line.size())
            break;
        const qsizetype from = at;
        while (at < line.size() && line[at] != ' ')
            ++at;
        words.add({line.sliced(from, at - from), at});
    }
    return words;
}

bool isDigits(QByteArrayView text)
{
    return !text.isEmpty()
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The number that a word of at most four digits is; -1 for any other word.
int smallNumber(QByteArrayView text)
{
    return isDigits(text) && text.size() <= 4 ? text.toInt() : -1;
}

bool isRight(char letter)
{
    switch (letter) {
    case 'r':
    case 'w':
    case 'x':
    case 's':
    case 'S':
    case 't':
    case 'T':
    case 'l':
    case 'L':
    case '-':
        return true;
    default:
        return false;
    }
}

bool isMode(QByteArrayView word)
{
    constexpr qsizetype length = 10;
    if (word.size() < length)
        return false;
    const QByteArrayView rights = word.sliced(1, length - 1);
    return std::all_of(rights.begin(), rights.end(), isRight);
}

// What kind of entry a line tells of, by its first letter; none for a line that tells of none.
std::optional<ListedKind> kindOf(const Words &words)
{
    if (words.size() < 4)
        return {};
    const QByteArrayView first = words[0].text;
    const bool isBracketed = first.size() == 1 && words[1].text.startsWith('[');
    if (!isBracketed && !isMode(first))
        return {};
    switch (first[0]) {
    case '-':
        return ListedKind::File;
    case 'd':
        return ListedKind::Folder;
    case 'l':
        return ListedKind::Link;
    default:
        return QByteArrayView("bcpsDPMn").contains(first[0]) ? std::optional(ListedKind::Other)
                                                             : std::nullopt;
    }
}

struct MonthName {
    const char16_t *name;
    int month;
};

// Beginnings of month names in other languages, where the English three letters do not serve.
constexpr std::array foreignMonths{
    MonthName{u"jän", 1},  MonthName{u"ene", 1},  MonthName{u"gen", 1},  MonthName{u"fév", 2},
    MonthName{u"fev", 2},  MonthName{u"mär", 3},  MonthName{u"mrz", 3},  MonthName{u"maa", 3},
    MonthName{u"avr", 4},  MonthName{u"abr", 4},  MonthName{u"mai", 5},  MonthName{u"mag", 5},
    MonthName{u"mei", 5},  MonthName{u"maj", 5},  MonthName{u"giu", 6},  MonthName{u"juin", 6},
    MonthName{u"juil", 7}, MonthName{u"lug", 7},  MonthName{u"aoû", 8},  MonthName{u"ago", 8},
    MonthName{u"set", 9},  MonthName{u"okt", 10}, MonthName{u"ott", 10}, MonthName{u"out", 10},
    MonthName{u"dez", 12}, MonthName{u"dic", 12}, MonthName{u"déc", 12}, MonthName{u"des", 12},
};

int foreignMonth(QByteArrayView word)
{
    const QString name = QString::fromUtf8(word).toLower();
    const auto found
        = std::find_if(foreignMonths.begin(), foreignMonths.end(),
                       [&name](const MonthName &known) { return name.startsWith(QStringView(known.name)); });
    return found == foreignMonths.end() ? 0 : found->month;
}

// The month that a word names, 0 for any other word.
int monthOf(QByteArrayView word)
{
    constexpr std::string_view english = "jan feb mar apr may jun jul aug sep oct nov dec";
    if (word.size() < 3 || isDigits(word.first(1)))
        return 0;
    constexpr char toLower = 'a' - 'A';
    std::array<char, 3> start{word[0], word[1], word[2]};
    for (char &letter : start)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + toLower) : letter;
    const std::size_t at = english.find({start.data(), start.size()});
    return at % 4 == 0 ? static_cast<int>(at / 4) + 1 : foreignMonth(word);
}

int dayOf(QByteArrayView word)
{
    if (word.endsWith('.') || word.endsWith(','))
        word.chop(1);
    const int day = smallNumber(word);
    return day >= 1 && day <= 31 ? day : 0;
}

QTime timeOf(QByteArrayView word)
{
    const qsizetype colon = word.indexOf(':');
    if (colon < 1 || word.size() < colon + 3)
        return {};
    return {smallNumber(word.first(colon)), smallNumber(word.sliced(colon + 1, 2))};
}

int yearOf(QByteArrayView word)
{
    const int year = word.size() == 4 ? smallNumber(word) : 0;
    return year >= 1900 ? year : 0;
}

struct Stamp {
    QDate date;
    QTime time;
    std::size_t words = 0;
};

// A date without its year is one of the last twelve months; a day ahead is a clock in another time zone.
QDate latestDate(int month, int day, QDate today)
{
    const QDate thisYear(today.year(), month, day);
    if (thisYear.isValid() && thisYear <= today.addDays(1))
        return thisYear;
    // A leap day lies up to eight years back.
    for (int back = 1; back <= 8; ++back) {
        const QDate earlier(today.year() - back, month, day);
        if (earlier.isValid())
            return earlier;
    }
    return {};
}

std::optional<Stamp> namedStamp(int month, int day, QByteArrayView yearOrTime, QDate today)
{
    if (month == 0 || day == 0)
        return {};
    Stamp stamp;
    stamp.words = 3;
    if (const int year = yearOf(yearOrTime)) {
        stamp.date = QDate(year, month, day);
    } else {
        stamp.time = timeOf(yearOrTime);
        if (stamp.time.isValid())
            stamp.date = latestDate(month, day, today);
    }
    return stamp.date.isValid() ? std::optional(stamp) : std::nullopt;
}

// "2024-05-01", or "05-01" for one of the last twelve months.
QDate numericDate(QByteArrayView word, QDate today)
{
    if (word.size() == 10 && word[4] == '-' && word[7] == '-')
        return {smallNumber(word.first(4)), smallNumber(word.sliced(5, 2)), smallNumber(word.sliced(8, 2))};
    if (word.size() == 5 && word[2] == '-')
        return latestDate(smallNumber(word.first(2)), smallNumber(word.sliced(3, 2)), today);
    return {};
}

bool isZone(QByteArrayView word)
{
    return word.size() == 5 && (word[0] == '+' || word[0] == '-') && isDigits(word.sliced(1));
}

std::optional<Stamp> numericStamp(const Words &words, std::size_t at, QDate today)
{
    Stamp stamp;
    stamp.date = numericDate(words[at].text, today);
    if (!stamp.date.isValid())
        return {};
    stamp.words = 1;
    if (at + 1 >= words.size())
        return stamp;
    stamp.time = timeOf(words[at + 1].text);
    if (!stamp.time.isValid())
        return stamp;
    const bool hasSeconds = words[at + 1].text.contains('.');
    stamp.words = hasSeconds && at + 2 < words.size() && isZone(words[at + 2].text) ? 3 : 2;
    return stamp;
}

std::optional<Stamp> stampAt(const Words &words, std::size_t at, QDate today)
{
    if (const auto stamp = numericStamp(words, at, today))
        return stamp;
    if (at + 2 >= words.size())
        return {};
    const QByteArrayView first = words[at].text;
    const QByteArrayView second = words[at + 1].text;
    const QByteArrayView third = words[at + 2].text;
    if (const auto stamp = namedStamp(monthOf(first), dayOf(second), third, today))
        return stamp;
    const int day = dayOf(first);
    return day ? namedStamp(monthOf(second), day, third, today) : std::nullopt;
}

// The name follows its date after a single blank; further blanks are the name's own.
void takeName(ListingEntry &entry, QByteArrayView line, qsizetype columnsEnd)
{
    if (columnsEnd + 1 >= line.size())
        return;
    QByteArrayView name = line.sliced(columnsEnd + 1);
    if (entry.kind == ListedKind::Link) {
        constexpr QByteArrayView arrow = " -> ";
        const qsizetype at = name.indexOf(arrow);
        if (at > 0) {
            entry.target = name.sliced(at + arrow.size()).toByteArray();
            name = name.first(at);
        }
    }
    entry.name = name.toByteArray();
}

void takeSize(ListingEntry &entry, const Words &words, std::size_t sizeAt)
{
    // A device has two numbers, "4, 64", in the place of its size.
    if (sizeAt > 0 && words[sizeAt - 1].text.endsWith(','))
        return;
    bool isNumber = false;
    const qint64 size = words[sizeAt].text.toLongLong(&isNumber);
    entry.size = isNumber ? size : -1;
}

// A date in words that nobody here knows still takes three columns of the usual nine.
bool takeByColumns(ListingEntry &entry, QByteArrayView line, const Words &words)
{
    constexpr std::size_t sizeColumn = 4;
    constexpr std::size_t lastOfDate = 7;
    if (words.size() <= lastOfDate + 1 || !isDigits(words[1].text) || !isDigits(words[sizeColumn].text))
        return false;
    takeSize(entry, words, sizeColumn);
    takeName(entry, line, words[lastOfDate].end);
    return true;
}

} // namespace

std::optional<ListingEntry> unixEntry(QByteArrayView line, QDate today)
{
    const Words words = wordsOf(line);
    const std::optional<ListedKind> kind = kindOf(words);
    if (!kind)
        return {};
    ListingEntry entry;
    entry.kind = *kind;
    for (std::size_t at = 2; at < words.size(); ++at) {
        if (!isDigits(words[at - 1].text))
            continue;
        const auto stamp = stampAt(words, at, today);
        if (!stamp)
            continue;
        takeSize(entry, words, at - 1);
        entry.date = stamp->date;
        entry.time = stamp->time;
        takeName(entry, line, words[at + stamp->words - 1].end);
        return entry.name.isEmpty() ? std::nullopt : std::optional(entry);
    }
    if (takeByColumns(entry, line, words) && !entry.name.isEmpty())
        return entry;
    return {};
}

} // namespace vandrel

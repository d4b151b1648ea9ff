#include "platform/mail/pop/PopReply.h"

#include <algorithm>
#include <limits>

#include "platform/net/ServerLine.h"

namespace vandrel {

namespace {

constexpr qsizetype longestText = 300;
constexpr qsizetype mostMechanisms = 100;

// Reads digits from `at` on and moves it behind them; nothing where there are none.
std::optional<qint64> takeNumber(const QByteArray &words, qsizetype &at)
{
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    const qsizetype begin = at;
    qint64 number = 0;
    for (; at < words.size() && isAsciiDigit(words.at(at)); ++at) {
        const int digit = words.at(at) - '0';
        number = number > (most - digit) / 10 ? most : number * 10 + digit;
    }
    return at > begin ? std::optional(number) : std::nullopt;
}

void skipBlanks(const QByteArray &words, qsizetype &at)
{
    while (at < words.size() && (words.at(at) == ' ' || words.at(at) == '\t'))
        ++at;
}

bool isVisibleAscii(char c)
{
    return c > ' ' && c < '\x7f';
}

} // namespace

QString popText(const QByteArray &octets)
{
    return readableWords(octets, longestText);
}

PopReply PopReply::parse(const QByteArray &line)
{
    const auto behind = [&](qsizetype indicator) { return line.mid(indicator).trimmed(); };
    if (line.left(3).compare("+OK", Qt::CaseInsensitive) == 0)
        return {Kind::Ok, behind(3)};
    if (line.left(4).compare("-ERR", Qt::CaseInsensitive) == 0)
        return {Kind::Refused, behind(4)};
    if (line == "+" || line.startsWith("+ "))
        return {Kind::Continuation, behind(1)};
    return {Kind::Malformed, line};
}

std::optional<PopNumbers> PopNumbers::parse(const QByteArray &words)
{
    qsizetype at = 0;
    skipBlanks(words, at);
    const auto first = takeNumber(words, at);
    const qsizetype between = at;
    skipBlanks(words, at);
    if (!first || at == between)
        return std::nullopt;
    const auto second = takeNumber(words, at);
    if (!second || (at < words.size() && words.at(at) != ' ' && words.at(at) != '\t'))
        return std::nullopt;
    return PopNumbers{*first, *second};
}

void PopCapabilities::add(const QByteArray &line)
{
    const QByteArrayList words = line.simplified().toUpper().split(' ');
    const QByteArray &name = words.first();
    stls = stls || name == "STLS";
    top = top || name == "TOP";
    pipelining = pipelining || name == "PIPELINING";
    user = user || name == "USER";
    if (name == "SASL" && sasl.size() < mostMechanisms)
        sasl += words.mid(1, mostMechanisms);
}

QByteArray apopStamp(const QByteArray &greeting)
{
    const qsizetype begin = greeting.indexOf('<');
    const qsizetype end = greeting.indexOf('>', begin);
    if (begin < 0 || end < 0)
        return {};
    const QByteArray inside = greeting.mid(begin + 1, end - begin - 1);
    const qsizetype at = inside.indexOf('@');
    const bool proper = at > 0 && at < inside.size() - 1 && inside.count('@') == 1 && !inside.contains('<')
        && std::all_of(inside.begin(), inside.end(), isVisibleAscii);
    return proper ? greeting.mid(begin, end - begin + 1) : QByteArray();
}

} // namespace vandrel

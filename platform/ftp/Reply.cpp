#include "platform/ftp/Reply.h"

#include <algorithm>
#include <array>

#include "platform/net/ServerLine.h"

namespace vandrel {

namespace {

constexpr int lowestUsualPort = 1024;
constexpr int highestPort = 65535;

QByteArray behindNumber(QByteArrayView line)
{
    return line.sliced(std::min<qsizetype>(line.size(), 4)).toByteArray();
}

QByteArray wholeText(const FtpReply &reply)
{
    return reply.lines.join('\n');
}

// A number of digits alone, at most `most`; -1 for anything else.
int boundedNumber(QByteArrayView digits, int most)
{
    constexpr qsizetype longest = 5;
    if (digits.isEmpty() || digits.size() > longest
        || !std::all_of(digits.begin(), digits.end(), isAsciiDigit))
        return -1;
    const int number = digits.toInt();
    return number <= most ? number : -1;
}

qsizetype digitsAt(QByteArrayView text, qsizetype from)
{
    qsizetype end = from;
    while (end < text.size() && isAsciiDigit(text[end]))
        ++end;
    return end - from;
}

// Six numbers with commas between them, at `from`.
std::optional<std::array<int, 6>> sixNumbersAt(QByteArrayView text, qsizetype from)
{
    constexpr int largestOctet = 255;
    std::array<int, 6> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0) {
            if (from >= text.size() || text[from] != ',')
                return {};
            ++from;
            while (from < text.size() && text[from] == ' ')
                ++from;
        }
        const qsizetype length = digitsAt(text, from);
        numbers[i] = boundedNumber(text.sliced(from, length), largestOctet);
        if (numbers[i] < 0)
            return {};
        from += length;
    }
    return numbers;
}

} // namespace

QString FtpReply::text() const
{
    constexpr qsizetype longestText = 500;
    return lines.isEmpty() ? QString() : readableWords(lines.last(), longestText);
}

FtpReplyReader::State FtpReplyReader::addLine(QByteArrayView line)
{
    if (m_isBroken)
        return State::Broken;
    const State state = m_isOpen ? go(line) : begin(line);
    m_isBroken = state == State::Broken;
    return state;
}

FtpReplyReader::State FtpReplyReader::begin(QByteArrayView line)
{
    const int number = replyNumber(line);
    const bool isOfSeveralLines = line.size() > 3 && line[3] == '-';
    if (number == 0 || (line.size() > 3 && line[3] != ' ' && !isOfSeveralLines) || line.size() > longestReply)
        return State::Broken;
    m_reply = {number, {behindNumber(line)}};
    m_size = line.size();
    m_isOpen = isOfSeveralLines;
    return m_isOpen ? State::Incomplete : State::Complete;
}

FtpReplyReader::State FtpReplyReader::go(QByteArrayView line)
{
    m_size += line.size() + 1;
    if (m_size > longestReply)
        return State::Broken;
    const bool isLast = replyNumber(line) == m_reply.number && (line.size() == 3 || line[3] == ' ');
    m_reply.lines.append(isLast ? behindNumber(line) : line.toByteArray());
    m_isOpen = !isLast;
    return isLast ? State::Complete : State::Incomplete;
}

std::optional<QByteArray> quotedDirectory(const FtpReply &reply)
{
    const QByteArray text = wholeText(reply);
    const qsizetype first = text.indexOf('"');
    const qsizetype last = text.lastIndexOf('"');
    if (first < 0 || last <= first + 1)
        return {};
    return text.mid(first + 1, last - first - 1).replace("\"\"", "\"");
}

std::optional<std::uint16_t> extendedPassivePort(const FtpReply &reply)
{
    const QByteArray text = wholeText(reply);
    const qsizetype open = text.indexOf('(');
    if (open < 0 || open + 5 >= text.size())
        return {};
    const char separator = text[open + 1];
    if (isAsciiDigit(separator) || text[open + 2] != separator || text[open + 3] != separator)
        return {};
    const qsizetype length = digitsAt(text, open + 4);
    const int port = boundedNumber(QByteArrayView(text).sliced(open + 4, length), highestPort);
    if (port <= 0 || open + 4 + length >= text.size() || text[open + 4 + length] != separator)
        return {};
    return static_cast<std::uint16_t>(port);
}

std::optional<std::uint16_t> passivePort(const FtpReply &reply)
{
    constexpr int octets = 256;
    const QByteArray text = wholeText(reply);
    for (qsizetype from = 0; from < text.size(); from += std::max<qsizetype>(1, digitsAt(text, from))) {
        const auto numbers = isAsciiDigit(text[from]) ? sixNumbersAt(text, from) : std::nullopt;
        if (!numbers)
            continue;
        const int port = (*numbers)[4] * octets + (*numbers)[5];
        return port >= lowestUsualPort ? std::optional(static_cast<std::uint16_t>(port)) : std::nullopt;
    }
    return {};
}

std::optional<qint64> sizeTold(const FtpReply &reply)
{
    const QByteArray digits = reply.lines.value(0).trimmed();
    bool isNumber = false;
    const qint64 size = digits.toLongLong(&isNumber);
    return isNumber && size >= 0 && isAsciiDigit(digits[0]) ? std::optional(size) : std::nullopt;
}

QSet<QByteArray> featuresOffered(const FtpReply &reply)
{
    QSet<QByteArray> features;
    for (qsizetype i = 1; i + 1 < reply.lines.size(); ++i) {
        const QByteArray feature = reply.lines[i].trimmed();
        const qsizetype blank = feature.indexOf(' ');
        features.insert((blank < 0 ? feature : feature.left(blank)).toUpper());
    }
    return features;
}

bool offersTls(const FtpReply &reply)
{
    return std::any_of(reply.lines.begin(), reply.lines.end(), [](const QByteArray &line) {
        const QByteArray feature = line.trimmed().toUpper();
        return feature.startsWith("AUTH ") && feature.contains("TLS");
    });
}

} // namespace vandrel

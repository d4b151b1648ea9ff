#include "platform/richtext/RtfTokenizer.h"

#include <algorithm>
#include <limits>

namespace vandrel {

namespace {

constexpr int longestWord = 32;

bool isLetter(char octet)
{
    return (octet >= 'a' && octet <= 'z') || (octet >= 'A' && octet <= 'Z');
}

bool isDigit(char octet)
{
    return octet >= '0' && octet <= '9';
}

int hexValue(char octet)
{
    if (isDigit(octet))
        return octet - '0';
    if (octet >= 'a' && octet <= 'f')
        return octet - 'a' + 10;
    if (octet >= 'A' && octet <= 'F')
        return octet - 'A' + 10;
    return -1;
}

bool endsText(char octet)
{
    return octet == '\\' || octet == '{' || octet == '}' || octet == '\r' || octet == '\n' || octet == '\0';
}

} // namespace

RtfToken RtfTokenizer::next()
{
    while (m_position < m_rtf.size()) {
        switch (m_rtf[m_position]) {
        case '{':
            ++m_position;
            return {RtfToken::Type::GroupOpen, {}};
        case '}':
            ++m_position;
            return {RtfToken::Type::GroupClose, {}};
        case '\r':
        case '\n':
        case '\0':
            ++m_position;
            break;
        case '\\':
            if (const RtfToken token = escape(); token.type != RtfToken::Type::End)
                return token;
            break;
        default:
            return plainText();
        }
    }
    return {};
}

RtfToken RtfTokenizer::plainText()
{
    const qsizetype start = m_position;
    const char *end = std::find_if(m_rtf.data() + start, m_rtf.data() + m_rtf.size(), endsText);
    m_position = end - m_rtf.data();
    return {RtfToken::Type::Text, m_rtf.sliced(start, m_position - start)};
}

/// Reads what follows a backslash; End when it comes to nothing.
RtfToken RtfTokenizer::escape()
{
    ++m_position;
    if (m_position >= m_rtf.size())
        return {};
    const char octetAfter = m_rtf[m_position];
    if (isLetter(octetAfter))
        return controlWord();
    if (octetAfter == '\'')
        return octet();
    ++m_position;
    const RtfToken symbol{RtfToken::Type::Symbol, m_rtf.sliced(m_position - 1, 1)};
    if (octetAfter == '\r' && m_position < m_rtf.size() && m_rtf[m_position] == '\n')
        ++m_position;
    return symbol;
}

RtfToken RtfTokenizer::octet()
{
    ++m_position;
    int value = 0;
    int digits = 0;
    while (digits < 2 && m_position < m_rtf.size() && hexValue(m_rtf[m_position]) >= 0) {
        value = value * 16 + hexValue(m_rtf[m_position]);
        ++m_position;
        ++digits;
    }
    if (digits < 2)
        return {};
    return {RtfToken::Type::Octet, {}, value};
}

RtfToken RtfTokenizer::controlWord()
{
    const qsizetype start = m_position;
    while (m_position < m_rtf.size() && m_position - start < longestWord && isLetter(m_rtf[m_position]))
        ++m_position;
    RtfToken token{RtfToken::Type::Word, m_rtf.sliced(start, m_position - start)};
    readNumber(token);
    if (m_position < m_rtf.size() && m_rtf[m_position] == ' ')
        ++m_position;
    return token.text == QByteArrayView("bin") ? binary(token) : token;
}

/// Reads the parameter, when there is one; a number too large or too small is taken as the nearest that fits.
void RtfTokenizer::readNumber(RtfToken &token)
{
    qsizetype at = m_position;
    const bool negative = at < m_rtf.size() && m_rtf[at] == '-';
    at += negative ? 1 : 0;
    if (at >= m_rtf.size() || !isDigit(m_rtf[at]))
        return;
    constexpr qint64 limit = std::numeric_limits<int>::max();
    qint64 value = 0;
    for (; at < m_rtf.size() && isDigit(m_rtf[at]); ++at)
        value = std::min(value * 10 + (m_rtf[at] - '0'), limit);
    token.number = static_cast<int>(negative ? -value : value);
    token.hasNumber = true;
    m_position = at;
}

RtfToken RtfTokenizer::binary(const RtfToken &word)
{
    const qsizetype announced = std::max(word.number, 0);
    const qsizetype length = std::min(announced, m_rtf.size() - m_position);
    RtfToken token{RtfToken::Type::Binary, m_rtf.sliced(m_position, length)};
    token.damaged = word.number < 0 || length < announced;
    m_position += length;
    return token;
}

RtfTokenizer::Skipped RtfTokenizer::skipGroup()
{
    Skipped result;
    qsizetype depth = 1;
    while (depth > 0) {
        const RtfToken token = next();
        switch (token.type) {
        case RtfToken::Type::End:
            return result;
        case RtfToken::Type::GroupOpen:
            ++depth;
            break;
        case RtfToken::Type::GroupClose:
            --depth;
            break;
        case RtfToken::Type::Binary:
            result.intact = result.intact && !token.damaged;
            break;
        default:
            break;
        }
    }
    result.closed = true;
    return result;
}

} // namespace vandrel

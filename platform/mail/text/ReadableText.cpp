#include "platform/mail/text/ReadableText.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vandrel {

namespace {

constexpr QStringView lineBreak = u"\r\n";
constexpr QStringView blankLine = u"\r\n\r\n";

// The places of characters that a document keeps for itself, and those that Unicode gives to none.
bool isNoCharacter(char16_t code)
{
    return (code >= 0xFDD0 && code <= 0xFDEF) || code == 0xFFFC || code >= 0xFFFE;
}

bool isSpecial(QChar character)
{
    const char16_t code = character.unicode();
    if (code < 0x20)
        return code != u'\t';
    if (code < 0x7F)
        return false;
    return code < 0xA0 || code == QChar::LineSeparator || code == QChar::ParagraphSeparator
        || isNoCharacter(code);
}

bool endsLine(QChar character)
{
    constexpr char16_t nextLine = 0x85;
    switch (character.unicode()) {
    case u'\r':
    case u'\n':
    case u'\f':
    case u'\v':
    case nextLine:
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return true;
    default:
        return false;
    }
}

} // namespace

void ReadableText::add(QStringView text)
{
    while (!text.isEmpty()) {
        const auto special = std::find_if(text.begin(), text.end(), isSpecial);
        const qsizetype run = special - text.begin();
        if (run > 0) {
            append(text.first(run));
            m_afterReturn = false;
        }
        if (special != text.end())
            addSpecial(*special);
        text = text.sliced(special != text.end() ? run + 1 : run);
    }
}

void ReadableText::addSpecial(QChar character)
{
    const bool secondHalf = m_afterReturn && character == QChar::LineFeed;
    m_afterReturn = character == QChar::CarriageReturn;
    if (secondHalf)
        return;
    static constexpr char16_t replacement = QChar::ReplacementCharacter;
    append(endsLine(character) ? lineBreak : QStringView(&replacement, 1));
}

void ReadableText::append(QStringView text)
{
    const qint64 room = m_omitted > 0 ? 0 : std::max<qint64>(0, m_limit - m_text.size());
    if (text.size() <= room) {
        m_text.append(text);
        return;
    }
    // Neither a pair of surrogates nor a line break is shown by half.
    qsizetype shown = text == lineBreak ? 0 : static_cast<qsizetype>(room);
    if (shown > 0 && text.at(shown - 1).isHighSurrogate())
        --shown;
    m_text.append(text.first(shown));
    m_omitted += text.size() - shown;
}

void ReadableText::startLine()
{
    m_afterReturn = false;
    if (!m_text.isEmpty() && !m_text.endsWith(lineBreak))
        append(lineBreak);
}

void ReadableText::startParagraph()
{
    startLine();
    if (!m_text.isEmpty() && !m_text.endsWith(blankLine))
        append(lineBreak);
}

void ReadableText::addLine(const QString &text)
{
    add(text);
    startLine();
}

void ReadableText::lift()
{
    m_limit = std::numeric_limits<qint64>::max();
    const qint64 omitted = std::exchange(m_omitted, 0);
    startLine();
    m_omitted = omitted;
}

} // namespace vandrel

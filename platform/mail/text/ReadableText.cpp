#include "platform/mail/text/ReadableText.h"

#include <algorithm>
#include <limits>

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

// The first special character, or the end. Most texts are plain ones, which are looked at many characters at once, and
// in their own size, so that as many as can be fit into one register.
const QChar *findSpecial(QStringView text)
{
    constexpr qsizetype together = 16;
    constexpr char16_t firstPlain = 0x20;
    constexpr char16_t plainCount = 0x7F - firstPlain;
    const char16_t *at = text.utf16();
    const char16_t *const end = at + text.size();
    while (end - at >= together) {
        char16_t others = 0;
        for (qsizetype i = 0; i < together; ++i)
            others |= static_cast<char16_t>(static_cast<char16_t>(at[i] - firstPlain) >= plainCount);
        if (others != 0)
            break;
        at += together;
    }
    return std::find_if(text.begin() + (at - text.utf16()), text.end(), isSpecial);
}

bool endsLine(QChar character)
{
    constexpr char16_t nextLine = 0x85;
    switch (character.unicode()) {
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

// How much of `run` goes into a line that has `room` left, which is not enough for all.
qsizetype partForLine(QStringView run, qsizetype room)
{
    constexpr qsizetype longestWord = 200;
    const qsizetype blank = run.first(room).lastIndexOf(u' ');
    if (blank >= 0 && room - blank <= longestWord)
        return blank + 1;
    if (run.size() <= longestWord)
        return 0;
    return room > 0 && run.at(room - 1).isHighSurrogate() ? room - 1 : room;
}

} // namespace

void ReadableText::add(QStringView text)
{
    while (!text.isEmpty()) {
        const QChar *const special = findSpecial(text);
        const qsizetype run = special - text.begin();
        if (addWholeLine(text, run)) {
            text = text.sliced(run + lineBreak.size());
            continue;
        }
        if (run > 0) {
            endReturns();
            appendRun(text.first(run));
        }
        if (special != text.end())
            addSpecial(*special);
        text = text.sliced(special != text.end() ? run + 1 : run);
    }
}

// Most lines are shown as they are, their break included. False, and nothing is added, for any other.
bool ReadableText::addWholeLine(QStringView text, qsizetype run)
{
    const bool isWhole = m_returns == 0 && m_lineLength + run <= m_longestLine
        && text.sliced(run).startsWith(lineBreak) && run + lineBreak.size() <= room();
    if (!isWhole)
        return false;
    m_text.append(text.first(run + lineBreak.size()));
    m_lineLength = 0;
    return true;
}

void ReadableText::addSpecial(QChar character)
{
    if (character == QChar::LineFeed && m_returns > 0) {
        m_returns = 0;
    } else if (character == QChar::CarriageReturn) {
        // The second of a row waits: before a LF, it belongs to one line break of three characters.
        if (m_returns != 1)
            breakLine();
        m_returns = m_returns == 0 ? 1 : 2;
    } else {
        endReturns();
        static constexpr char16_t replacement = QChar::ReplacementCharacter;
        if (endsLine(character))
            breakLine();
        else
            appendRun(QStringView(&replacement, 1));
    }
}

void ReadableText::endReturns()
{
    if (m_returns == 2)
        breakLine();
    m_returns = 0;
}

void ReadableText::breakLine()
{
    append(lineBreak);
    m_lineLength = 0;
}

void ReadableText::appendRun(QStringView run)
{
    while (m_lineLength + run.size() > m_longestLine) {
        const qsizetype part = partForLine(run, m_longestLine - m_lineLength);
        append(run.first(part));
        breakLine();
        run = run.sliced(part);
    }
    append(run);
    m_lineLength += run.size();
}

qint64 ReadableText::room() const
{
    if (m_lifted)
        return std::numeric_limits<qint64>::max();
    return isFull() ? 0 : std::max<qint64>(0, m_limit - m_text.size());
}

void ReadableText::append(QStringView text)
{
    if (text.size() <= room()) {
        m_text.append(text);
        return;
    }
    // Neither a pair of surrogates nor a line break is shown by half.
    qsizetype shown = text == lineBreak ? 0 : static_cast<qsizetype>(room());
    if (shown > 0 && text.at(shown - 1).isHighSurrogate())
        --shown;
    m_text.append(text.first(shown));
    m_omitted += text.size() - shown;
}

void ReadableText::startLine()
{
    endReturns();
    if (isFull())
        return;
    if (!m_text.isEmpty() && !m_text.endsWith(lineBreak))
        breakLine();
}

void ReadableText::startParagraph()
{
    startLine();
    if (isFull())
        return;
    if (!m_text.isEmpty() && !m_text.endsWith(blankLine))
        breakLine();
}

void ReadableText::addLine(const QString &text)
{
    add(text);
    startLine();
}

void ReadableText::lift()
{
    m_lifted = true;
    startLine();
}

} // namespace vandrel

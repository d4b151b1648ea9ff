#include "platform/richtext/RtfTextSink.h"

#include <algorithm>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

/// Octets that mean the same character in every code page and need no second look.
bool isPlain(QByteArrayView octets)
{
    return std::all_of(octets.begin(), octets.end(),
                       [](char octet) { return octet >= 0x20 && octet < 0x7F; });
}

/// True for characters that the document model takes as its own structure, or that are no text.
bool isForeign(QChar c)
{
    const char16_t value = c.unicode();
    return (value < 0x20 && value != u'\t') || value == 0x2029 || value == 0xFDD0 || value == 0xFDD1
        || value == QChar::ObjectReplacementCharacter;
}

QString withoutForeign(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t value = text[i].unicode();
        if (!isForeign(text[i]))
            result.append(text[i]);
        else if (value == u'\r' || value == u'\n' || value == u'\v' || value == 0x2029) {
            const bool isSecondOfPair = value == u'\n' && i > 0 && text[i - 1] == u'\r';
            if (!isSecondOfPair)
                result.append(QChar::LineSeparator);
        } else if (value >= 0x20)
            result.append(QChar::ReplacementCharacter);
    }
    return result;
}

/// Bullets of symbol fonts have a character of their own, which is shown in any font.
QString withKnownBullets(QString text)
{
    for (QChar &c : text) {
        switch (c.unicode()) {
        case 0xF0B7:
            c = QChar(0x2022);
            break;
        case 0xF0A7:
            c = QChar(0x25AA);
            break;
        case 0xF0A8:
            c = QChar(0x25FB);
            break;
        case 0xF0D8:
            c = QChar(0x27A2);
            break;
        case 0xF0FC:
            c = QChar(0x2713);
            break;
        default:
            break;
        }
    }
    return text;
}

void appendFormatting(QByteArray &rtf, const RtfCharState &state, int defaultFont, bool hasDefaultFont)
{
    const auto word
        = [&rtf](const char *name, int number) { rtf.append(name).append(QByteArray::number(number)); };
    if (state.font >= 0 || hasDefaultFont)
        word("\\f", state.font >= 0 ? state.font : defaultFont);
    word("\\fs", state.halfPoints);
    if (state.colour > 0)
        word("\\cf", state.colour);
    if (state.has(RtfCharState::Bold))
        rtf.append("\\b");
    if (state.has(RtfCharState::Italic))
        rtf.append("\\i");
    if (state.has(RtfCharState::Underline))
        rtf.append("\\ul");
    rtf.append(' ');
}

void appendEscaped(QByteArray &rtf, QStringView text)
{
    for (const QChar c : text) {
        const char16_t value = c.unicode();
        if (value == u'\\' || value == u'{' || value == u'}')
            rtf.append('\\').append(static_cast<char>(value));
        else if (value >= 0x20 && value < 0x7F)
            rtf.append(static_cast<char>(value));
        else
            rtf.append("\\u").append(QByteArray::number(static_cast<qint16>(value))).append('?');
    }
}

} // namespace

RtfTextSink::RtfTextSink(RtfFormats &formats, const RtfFontTable &fonts, qsizetype mostCharacters)
    : m_formats(formats), m_fonts(fonts), m_mostCharacters(mostCharacters)
{ }

int RtfTextSink::pageOf(const RtfCharState &state) const
{
    const int page = m_fonts.codePage(state.font >= 0 ? state.font : m_formats.defaultFont());
    return page ? page : m_documentPage;
}

void RtfTextSink::flush(RtfStory &story, const RtfCharState &state)
{
    if (m_octets.isEmpty())
        return;
    const int page = pageOf(state);
    if (page == codepage::Symbol)
        addText(story, state, withKnownBullets(m_decoder.decode(page, m_octets)));
    else if (isPlain(m_octets))
        append(story, state, QString::fromLatin1(m_octets));
    else
        addText(story, state, m_decoder.decode(page, m_octets));
    m_octets.clear();
}

void RtfTextSink::addText(RtfStory &story, const RtfCharState &state, QStringView text)
{
    if (std::any_of(text.begin(), text.end(), isForeign))
        append(story, state, withoutForeign(text));
    else
        append(story, state, text);
}

void RtfTextSink::append(RtfStory &story, const RtfCharState &state, QStringView text)
{
    if (state.has(RtfCharState::Deleted)) {
        m_metDeleted = true;
        return;
    }
    if (story.text().size() + m_hidden.size() + text.size() > m_mostCharacters)
        throw RuntimeError(
            error::InvalidFileFormat,
            QStringLiteral("The document cannot be opened: its text is longer than %1 characters. Split it "
                           "into several files.")
                .arg(m_mostCharacters));
    if (!state.has(RtfCharState::Hidden)) {
        settleHidden(story);
        story.append(text, m_formats.characterFormat(state));
        return;
    }
    if (!m_hidden.isEmpty() && !(m_hiddenState == state))
        settleHidden(story);
    m_hidden.append(text);
    m_hiddenState = state;
    m_metHidden = true;
}

void RtfTextSink::settleHidden(RtfStory &story)
{
    if (m_hidden.isEmpty())
        return;
    QByteArray rtf("{\\v\\uc1");
    const int defaultFont = m_formats.defaultFont();
    appendFormatting(rtf, m_hiddenState, defaultFont, !m_fonts.name(defaultFont).isEmpty());
    appendEscaped(rtf, m_hidden);
    rtf.append('}');
    m_hidden.clear();
    story.append(QString(QChar::ObjectReplacementCharacter), m_formats.rawObjectFormat(m_hiddenState, rtf));
}

void RtfTextSink::addObject(RtfStory &story, int format)
{
    settleHidden(story);
    story.append(QString(QChar::ObjectReplacementCharacter), format);
}

} // namespace vandrel

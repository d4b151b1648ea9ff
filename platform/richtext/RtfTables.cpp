#include "platform/richtext/RtfTables.h"

#include <algorithm>
#include <array>

namespace vandrel {

namespace {

constexpr int deepestInheritance = 16;
constexpr qsizetype mostStyles = 65'536;
constexpr qsizetype longestFontName = 256;

} // namespace

/// Reads one font table. Entries stand in groups of their own, or one behind the other, each ended by ";".
class RtfFontTable::Reader
{
public:
    Reader(RtfFontTable &table, QByteArrayView group, int page, qsizetype limit, CodePageDecoder &decoder)
        : m_table(table), m_group(group), m_tokens(group), m_page(page), m_limit(limit), m_decoder(decoder)
    { }

    void run()
    {
        for (RtfToken token = nextToken(); token.type != RtfToken::Type::End; token = nextToken())
            take(token);
        finish(m_group.size());
    }

private:
    RtfToken nextToken()
    {
        m_tokenStart = m_tokens.position();
        return m_tokens.next();
    }

    void take(const RtfToken &token)
    {
        switch (token.type) {
        case RtfToken::Type::GroupOpen:
            openGroup();
            break;
        case RtfToken::Type::GroupClose:
            finish(m_tokenStart);
            m_groupStart = -1;
            break;
        case RtfToken::Type::Word:
            word(token);
            break;
        case RtfToken::Type::Octet:
            if (!skipsFallback())
                addOctets(QByteArray(1, static_cast<char>(token.number)));
            break;
        case RtfToken::Type::Text:
            text(token.text);
            break;
        default:
            break;
        }
    }

    void openGroup()
    {
        m_groupStart = m_tokens.position();
        // Alternative names, classifications and embedded fonts are not needed to show text.
        const RtfTokenizer before = m_tokens;
        const RtfToken first = m_tokens.next();
        if ((first.type == RtfToken::Type::Symbol && first.text == QByteArrayView("*"))
            || first.text == QByteArrayView("falt"))
            m_tokens.skipGroup();
        else
            m_tokens = before;
    }

    void word(const RtfToken &token)
    {
        switch (rtfWord(token.text).word) {
        case RtfWord::F:
            begin(token.number);
            break;
        case RtfWord::Fcharset:
            m_font.charset = token.number;
            break;
        case RtfWord::Cpg:
            m_cpg = token.number;
            break;
        case RtfWord::U:
            decodePending();
            m_font.name.append(QChar(static_cast<char16_t>(token.number)));
            m_fallback = true;
            break;
        default:
            break;
        }
    }

    void begin(int number)
    {
        finish(m_tokenStart);
        m_open = true;
        m_font = RtfFont();
        m_font.index = number;
        m_cpg = 0;
        m_octets.clear();
        m_entryStart = m_groupStart >= 0 ? m_groupStart : m_tokenStart;
    }

    bool skipsFallback()
    {
        const bool skips = m_fallback;
        m_fallback = false;
        return skips;
    }

    void addOctets(QByteArrayView octets)
    {
        if (m_open && m_octets.size() < longestFontName)
            m_octets.append(octets.first(std::min(octets.size(), longestFontName)));
    }

    void text(QByteArrayView octets)
    {
        if (skipsFallback())
            octets = octets.sliced(1);
        const qsizetype end = octets.indexOf(';');
        addOctets(end < 0 ? octets : octets.first(end));
        if (end >= 0)
            finish(m_tokens.position() - octets.size() + end + 1);
    }

    int codePage() const
    {
        const int page = codePageOfCharset(m_font.charset);
        return page ? page : m_cpg;
    }

    void decodePending()
    {
        const int page = codePage();
        const bool byDocument = page == 0 || page == codepage::Symbol;
        m_font.name.append(m_decoder.decode(byDocument ? m_page : page, m_octets));
        m_octets.clear();
    }

    void finish(qsizetype end)
    {
        if (!m_open)
            return;
        m_open = false;
        m_fallback = false;
        decodePending();
        m_font.name = m_font.name.trimmed();
        m_font.raw = m_group.sliced(m_entryStart, end - m_entryStart).toByteArray();
        if (!m_font.raw.endsWith(';'))
            m_font.raw.append(';');
        store();
    }

    void store()
    {
        if (const auto known = m_table.m_positions.constFind(m_font.index);
            known != m_table.m_positions.constEnd())
            m_table.m_entries[*known] = m_font;
        else if (m_table.m_entries.size() < m_limit) {
            m_table.m_positions.insert(m_font.index, m_table.m_entries.size());
            m_table.m_entries.append(m_font);
        } else
            return;
        m_table.m_codePages.insert(m_font.index, codePage());
        m_table.m_numbers.insert(m_font.name, m_font.index);
    }

    RtfFontTable &m_table;
    QByteArrayView m_group;
    RtfTokenizer m_tokens;
    int m_page;
    qsizetype m_limit;
    CodePageDecoder &m_decoder;

    RtfFont m_font;
    QByteArray m_octets;
    int m_cpg = 0;
    bool m_open = false;
    bool m_fallback = false;
    qsizetype m_tokenStart = 0;
    qsizetype m_groupStart = -1;
    qsizetype m_entryStart = 0;
};

void RtfFontTable::read(QByteArrayView group, int page, qsizetype limit, CodePageDecoder &decoder)
{
    Reader(*this, group, page, limit, decoder).run();
}

QString RtfFontTable::name(int number) const
{
    const auto found = m_positions.constFind(number);
    return found != m_positions.constEnd() ? m_entries[*found].name : QString();
}

int RtfFontTable::codePage(int number) const
{
    return m_codePages.value(number);
}

QList<QColor> readRtfColours(QByteArrayView group, qsizetype limit)
{
    QList<QColor> colours;
    std::array<int, 3> parts{};
    bool stated = false;
    RtfTokenizer tokens(group);
    const auto state = [&](std::size_t part, int value) {
        parts[part] = std::clamp(value, 0, 255);
        stated = true;
    };
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::Word) {
            switch (rtfWord(token.text).word) {
            case RtfWord::Red:
                state(0, token.number);
                break;
            case RtfWord::Green:
                state(1, token.number);
                break;
            case RtfWord::Blue:
                state(2, token.number);
                break;
            default:
                break;
            }
        } else if (token.type == RtfToken::Type::Text) {
            for (qsizetype ends = token.text.count(';'); ends > 0 && colours.size() < limit; --ends) {
                colours.append(stated ? QColor(parts[0], parts[1], parts[2]) : QColor());
                parts = {};
                stated = false;
            }
        }
    }
    return colours;
}

void RtfStyleSheet::read(QByteArrayView group, RtfKeptWords &kept)
{
    RtfTokenizer tokens(group);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type != RtfToken::Type::GroupOpen)
            continue;
        const qsizetype start = tokens.position();
        const bool closed = tokens.skipGroup().closed;
        readStyle(group.sliced(start, tokens.position() - start - (closed ? 1 : 0)), kept);
    }
}

void RtfStyleSheet::readStyle(QByteArrayView group, RtfKeptWords &kept)
{
    Style style;
    bool isCharacterStyle = false;
    int number = 0;
    RtfTokenizer tokens(group);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::GroupOpen)
            tokens.skipGroup();
        if (token.type != RtfToken::Type::Word)
            continue;
        const RtfWordInfo info = rtfWord(token.text);
        if (info.word == RtfWord::Ts || info.word == RtfWord::Ds)
            return;
        if (info.word == RtfWord::S || info.word == RtfWord::Cs) {
            isCharacterStyle = info.word == RtfWord::Cs;
            number = token.number;
        } else if (info.word == RtfWord::Sbasedon)
            style.basedOn = token.number;
        else if (info.kind == RtfWordKind::Character && info.word != RtfWord::Plain)
            applyCharacterWord(style.own.characters, info.word, token, kept);
        else if (info.kind == RtfWordKind::Paragraph && info.word != RtfWord::Pard)
            applyParagraphWord(style.own.paragraph, info.word, token, kept);
    }
    Styles &styles = isCharacterStyle ? m_characterStyles : m_paragraphStyles;
    if (styles.size() < mostStyles)
        styles.insert(number, style);
}

const RtfStyleSheet::Formatting &
RtfStyleSheet::resolved(const Styles &styles, QHash<int, Formatting> &cache, int number)
{
    static const Formatting nothing;
    if (!styles.contains(number))
        return nothing;
    const auto known = cache.constFind(number);
    if (known != cache.constEnd())
        return *known;
    QList<const Style *> chain;
    for (auto at = styles.constFind(number); at != styles.constEnd() && chain.size() < deepestInheritance;
         at = styles.constFind(at->basedOn)) {
        if (chain.contains(&*at))
            break;
        chain.append(&*at);
    }
    Formatting result;
    std::for_each(chain.crbegin(), chain.crend(), [&result](const Style *style) {
        result.characters.overlay(style->own.characters);
        result.paragraph.overlay(style->own.paragraph);
    });
    return *cache.insert(number, result);
}

const RtfStyleSheet::Formatting &RtfStyleSheet::paragraphStyle(int number)
{
    return resolved(m_paragraphStyles, m_resolvedParagraphs, number);
}

const RtfParaState &RtfStyleSheet::ownParagraph(int number) const
{
    static const RtfParaState nothing = RtfParaState::unset();
    const auto found = m_paragraphStyles.constFind(number);
    return found != m_paragraphStyles.constEnd() ? found->own.paragraph : nothing;
}

const RtfStyleSheet::Formatting &RtfStyleSheet::characterStyle(int number)
{
    return resolved(m_characterStyles, m_resolvedCharacters, number);
}

} // namespace vandrel

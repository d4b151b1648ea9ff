#include "platform/richtext/RtfLists.h"

#include <algorithm>
#include <functional>

#include "platform/richtext/CodePages.h"
#include "platform/richtext/RtfFormatting.h"
#include "platform/richtext/RtfWords.h"

namespace vandrel {

namespace {

constexpr qsizetype mostLists = 65'536;
constexpr qsizetype longestLevelText = 64;
/// The first number of a list, as far as other programs go.
constexpr int largestStart = 32'767;

int startOf(const RtfToken &token)
{
    return std::clamp(token.number, 0, largestStart);
}

/// Calls `group` with the octets of each group that stands directly in `octets`, and `word` with each word there.
void eachDirectly(QByteArrayView octets,
                  const std::function<void(QByteArrayView)> &group,
                  const std::function<void(const RtfToken &)> &word)
{
    RtfTokenizer tokens(octets);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::Word)
            word(token);
        if (token.type != RtfToken::Type::GroupOpen)
            continue;
        const qsizetype start = tokens.position();
        const bool closed = tokens.skipGroup().closed;
        group(octets.sliced(start, tokens.position() - start - (closed ? 1 : 0)));
    }
}

/// The first control word of a group; a star before it is passed over.
RtfWord firstWord(QByteArrayView group)
{
    RtfTokenizer tokens(group);
    RtfToken token = tokens.next();
    if (token.type == RtfToken::Type::Symbol && token.text == QByteArrayView("*"))
        token = tokens.next();
    return token.type == RtfToken::Type::Word ? rtfWord(token.text).word : RtfWord::Unknown;
}

/// The literal text directly in a group, groups inside it left out.
QString literalText(QByteArrayView group)
{
    QString text;
    CodePageDecoder decoder;
    RtfTokenizer tokens(group);
    bool fallback = false;
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End && text.size() < longestLevelText;
         token = tokens.next()) {
        const bool skipOne = std::exchange(fallback, false);
        if (token.type == RtfToken::Type::GroupOpen)
            tokens.skipGroup();
        else if (token.type == RtfToken::Type::Octet && !skipOne)
            text.append(decoder.decode(codepage::Western, QByteArray(1, static_cast<char>(token.number))));
        else if (token.type == RtfToken::Type::Text)
            text.append(decoder.decode(codepage::Western, token.text.sliced(skipOne ? 1 : 0)));
        else if (token.type == RtfToken::Type::Word && token.text == QByteArrayView("u")) {
            text.append(QChar(static_cast<char16_t>(token.number)));
            fallback = true;
        }
    }
    return text;
}

/// The text of a level: its first character is the length, a ";" ends it.
QString levelText(QByteArrayView group)
{
    const QString text = literalText(group);
    return text.isEmpty() ? text : text.mid(1, text.at(0).unicode());
}

RtfListLevel readLevel(QByteArrayView group)
{
    RtfListLevel level;
    eachDirectly(
        group,
        [&level](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::Leveltext)
                level.text = levelText(inner);
        },
        [&level](const RtfToken &token) {
            switch (rtfWord(token.text).word) {
            case RtfWord::Levelnfc:
            case RtfWord::Levelnfcn:
                level.kind = token.number;
                break;
            case RtfWord::Levelstartat:
                level.start = startOf(token);
                break;
            case RtfWord::Levellegal:
                level.isDecimal = !token.hasNumber || token.number != 0;
                break;
            case RtfWord::Li:
                level.left = clampTwips(token.number);
                break;
            case RtfWord::Fi:
                level.first = clampTwips(token.number);
                break;
            default:
                break;
            }
        });
    return level;
}

QTextListFormat::Style bulletStyle(QStringView text)
{
    switch (text.isEmpty() ? u'\0' : text.at(0).unicode()) {
    case u'o':
    case u'\u25E6':
    case u'\u25CB':
        return QTextListFormat::ListCircle;
    case u'\u25AA':
    case u'\u25A0':
    case u'\uF0A7':
    case u'\u00A7':
        return QTextListFormat::ListSquare;
    default:
        return QTextListFormat::ListDisc;
    }
}

} // namespace

QTextListFormat::Style RtfListLevel::style() const
{
    switch (kind) {
    case 1:
        return QTextListFormat::ListUpperRoman;
    case 2:
        return QTextListFormat::ListLowerRoman;
    case 3:
        return QTextListFormat::ListUpperAlpha;
    case 4:
        return QTextListFormat::ListLowerAlpha;
    case rtflist::Bullet:
        return bulletStyle(text);
    case rtflist::NoNumber:
        return QTextListFormat::ListStyleUndefined;
    default:
        return QTextListFormat::ListDecimal;
    }
}

void RtfLists::readLists(QByteArrayView group)
{
    eachDirectly(
        group,
        [this](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::List && m_lists.size() < mostLists)
                readList(inner);
        },
        [](const RtfToken &) {});
}

void RtfLists::readList(QByteArrayView group)
{
    Levels levels;
    std::size_t count = 0;
    int id = 0;
    eachDirectly(
        group,
        [&](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::Listlevel && count < levels.size())
                levels[count++] = readLevel(inner);
        },
        [&](const RtfToken &token) {
            if (rtfWord(token.text).word == RtfWord::Listid)
                id = token.number;
        });
    // A list with fewer levels than its paragraphs use goes on like its last one.
    if (count == 0)
        return;
    std::fill(levels.begin() + static_cast<std::ptrdiff_t>(count), levels.end(), levels[count - 1]);
    m_lists.insert(id, levels);
}

void RtfLists::readOverrides(QByteArrayView group)
{
    eachDirectly(
        group,
        [this](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::Listoverride && m_overrides.size() < mostLists)
                readOverride(inner);
        },
        [](const RtfToken &) {});
}

namespace {

/// What {\lfolevel ...} says about one level: a whole level of its own, or another start.
void applyLevelOverride(RtfListLevel &level, QByteArrayView group)
{
    eachDirectly(
        group,
        [&level](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::Listlevel)
                level = readLevel(inner);
        },
        [&level](const RtfToken &token) {
            if (rtfWord(token.text).word == RtfWord::Levelstartat)
                level.start = startOf(token);
        });
}

} // namespace

void RtfLists::readOverride(QByteArrayView group)
{
    int id = 0;
    int number = -1;
    QList<QByteArrayView> changes;
    eachDirectly(
        group,
        [&](QByteArrayView inner) {
            if (firstWord(inner) == RtfWord::Lfolevel && changes.size() < rtflist::levels)
                changes.append(inner);
        },
        [&](const RtfToken &token) {
            const RtfWord word = rtfWord(token.text).word;
            if (word == RtfWord::Listid)
                id = token.number;
            else if (word == RtfWord::Ls)
                number = token.number;
        });
    const auto list = m_lists.constFind(id);
    if (number < 0 || list == m_lists.constEnd())
        return;
    Levels levels = *list;
    for (qsizetype i = 0; i < changes.size(); ++i)
        applyLevelOverride(levels[static_cast<std::size_t>(i)], changes[i]);
    m_overrides.insert(number == 0 ? rtflist::Zero : number, levels);
}

const RtfListLevel *RtfLists::level(int override, int level) const
{
    const auto found = m_overrides.constFind(override);
    return found != m_overrides.constEnd() ? &found->at(static_cast<std::size_t>(level)) : nullptr;
}

bool RtfLegacyList::operator==(const RtfLegacyList &other) const
{
    return isList == other.isList && level.kind == other.level.kind && level.start == other.level.start
        && level.text == other.level.text && before == other.before && after == other.after;
}

namespace {

void applyLegacyWord(RtfLegacyList &list, const RtfToken &token)
{
    const auto counts = [&list](int kind) { list.level.kind = kind; };
    switch (rtfWord(token.text).word) {
    case RtfWord::Pnlvlblt:
        list.isList = true;
        counts(rtflist::Bullet);
        break;
    case RtfWord::Pnlvl:
    case RtfWord::Pnlvlbody:
        list.isList = true;
        break;
    case RtfWord::Pnlvlcont:
        list.isList = false;
        break;
    case RtfWord::Pnucrm:
        counts(1);
        break;
    case RtfWord::Pnlcrm:
        counts(2);
        break;
    case RtfWord::Pnucltr:
        counts(3);
        break;
    case RtfWord::Pnlcltr:
        counts(4);
        break;
    case RtfWord::Pnstart:
        list.level.start = startOf(token);
        break;
    default:
        break;
    }
}

} // namespace

RtfLegacyList readRtfLegacyList(QByteArrayView group)
{
    RtfLegacyList list;
    eachDirectly(
        group,
        [&list](QByteArrayView inner) {
            const RtfWord word = firstWord(inner);
            if (word == RtfWord::Pntxtb)
                list.before = literalText(inner);
            else if (word == RtfWord::Pntxta)
                list.after = literalText(inner);
        },
        [&list](const RtfToken &token) { applyLegacyWord(list, token); });
    list.level.text
        = list.level.kind == rtflist::Bullet ? list.before : list.before + QChar(u'\0') + list.after;
    return list;
}

} // namespace vandrel

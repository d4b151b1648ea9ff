#include "platform/richtext/RtfFields.h"

#include <QStringList>
#include <QUrl>

#include "platform/richtext/CodePages.h"
#include "platform/richtext/RtfTokenizer.h"

namespace vandrel {

namespace {

constexpr qsizetype longestCode = 8192;

/// Splits an instruction into words; a quoted text is one word without its quotes, and \" and \\ inside it stand
/// for the character.
QStringList wordsOf(QStringView code)
{
    QStringList words;
    QString word;
    bool quoted = false;
    bool open = false;
    for (qsizetype i = 0; i < code.size(); ++i) {
        const QChar c = code[i];
        if (quoted && c == u'\\' && i + 1 < code.size() && (code[i + 1] == u'"' || code[i + 1] == u'\\'))
            word.append(code[++i]);
        else if (c == u'"') {
            quoted = !quoted;
            open = true;
        } else if (c.isSpace() && !quoted) {
            if (open)
                words.append(word);
            word.clear();
            open = false;
        } else {
            word.append(c);
            open = true;
        }
    }
    if (open)
        words.append(word);
    return words;
}

bool isFollowed(const QUrl &url)
{
    const QString scheme = url.scheme();
    return scheme == QLatin1String("http") || scheme == QLatin1String("https")
        || scheme == QLatin1String("mailto");
}

} // namespace

QString rtfInstructionText(QByteArrayView group)
{
    QString text;
    CodePageDecoder decoder;
    RtfTokenizer tokens(group);
    bool fallback = false;
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End && text.size() < longestCode;
         token = tokens.next()) {
        const bool skipOne = std::exchange(fallback, false);
        if (token.type == RtfToken::Type::Octet && !skipOne)
            text.append(decoder.decode(codepage::Western, QByteArray(1, static_cast<char>(token.number))));
        else if (token.type == RtfToken::Type::Text)
            text.append(decoder.decode(codepage::Western, token.text.sliced(skipOne ? 1 : 0)));
        else if (token.type == RtfToken::Type::Symbol && QByteArrayView("\\{}").contains(token.text))
            text.append(QLatin1Char(token.text.front()));
        else if (token.type == RtfToken::Type::Word && token.text == QByteArrayView("u")) {
            text.append(QChar(static_cast<char16_t>(token.number)));
            fallback = true;
        }
    }
    return text.trimmed();
}

QString rtfHyperlinkTarget(QStringView code)
{
    const QStringList words = wordsOf(code);
    if (words.isEmpty() || words.first().compare(QLatin1String("HYPERLINK"), Qt::CaseInsensitive) != 0)
        return {};
    QString address;
    QString place;
    for (qsizetype i = 1; i < words.size(); ++i) {
        const bool takesText = i + 1 < words.size();
        if (words[i].compare(QLatin1String("\\l"), Qt::CaseInsensitive) == 0 && takesText)
            place = words[++i];
        else if ((words[i] == QLatin1String("\\o") || words[i] == QLatin1String("\\t")) && takesText)
            ++i;
        else if (!words[i].startsWith(u'\\') && address.isEmpty())
            address = words[i];
    }
    if (!address.isEmpty() && !address.startsWith(u'#') && !isFollowed(QUrl(address)))
        return {};
    return place.isEmpty() ? address : address + u'#' + place;
}

RtfSymbolField rtfSymbolField(QStringView code)
{
    const QStringList words = wordsOf(code);
    if (words.size() < 2 || words.first().compare(QLatin1String("SYMBOL"), Qt::CaseInsensitive) != 0)
        return {};
    bool isNumber = false;
    const uint number = words[1].toUInt(&isNumber, 0);
    if (!isNumber || number < 0x20 || number > 0xFFFF)
        return {};
    RtfSymbolField symbol;
    const qsizetype fontSwitch = words.indexOf(QLatin1String("\\f"));
    if (fontSwitch > 0)
        symbol.font = words.value(fontSwitch + 1);
    const bool isUnicode = words.contains(QLatin1String("\\u"));
    symbol.character = QChar(static_cast<char16_t>(!isUnicode && number < 0x100 ? 0xF000 + number : number));
    return symbol;
}

} // namespace vandrel

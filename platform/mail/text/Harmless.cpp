#include "platform/mail/text/Harmless.h"

#include <algorithm>

#include "platform/mail/text/MailCharset.h"

namespace vandrel {

namespace {

bool turnsDirection(QChar character)
{
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool isHarmful(QChar character)
{
    return turnsDirection(character) || character.category() == QChar::Other_Control
        || character.isNonCharacter() || character == QChar::ObjectReplacementCharacter;
}

// Encoded words in ISO-8859-1 mean Windows-1252 as often as whole texts do.
QChar meantCharacter(QChar character)
{
    const bool unused = character.unicode() >= 0x80 && character.unicode() < 0xA0;
    return unused ? westernCharacter(character.toLatin1()) : character;
}

} // namespace

QString harmlessLine(QString text, qsizetype longest)
{
    std::transform(text.begin(), text.end(), text.begin(), meantCharacter);
    text = text.simplified();
    text.removeIf(isHarmful);
    if (text.size() <= longest)
        return text;
    text.truncate(longest - (text.at(longest - 1).isHighSurrogate() ? 1 : 0));
    return text.append(u'\u2026');
}

} // namespace vandrel

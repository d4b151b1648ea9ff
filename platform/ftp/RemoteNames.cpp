#include "platform/ftp/RemoteNames.h"

#include <algorithm>

#include <QStringDecoder>

namespace vandrel {

namespace {

constexpr char16_t privateBase = 0xF000;
constexpr unsigned char firstHighOctet = 0x80;

bool isPrivate(char16_t character)
{
    return character >= privateBase && character <= privateBase + 0xFF;
}

bool isControl(char16_t character)
{
    return character < 0x20 || character == 0x7F;
}

QChar escaped(char16_t octet)
{
    return {static_cast<char16_t>(privateBase + octet)};
}

// The text of octets in UTF-8; none when they are not. A byte order mark is a character like any other.
std::optional<QString> fromUtf8(const QByteArray &octets)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(octets);
    if (decoder.hasError())
        return {};
    return text;
}

QString highOctetsEscaped(const QByteArray &octets)
{
    QString text;
    text.reserve(octets.size());
    for (const char octet : octets) {
        const auto value = static_cast<unsigned char>(octet);
        text += value < firstHighOctet ? QChar(char16_t{value}) : escaped(value);
    }
    return text;
}

void appendShown(QString &shown, QChar character, bool isLast, bool isName)
{
    const char16_t value = character.unicode();
    const bool isMisread = isControl(value) || (value == u'/' && isName) || (value == u' ' && isLast);
    if (isMisread)
        shown += escaped(value);
    else if (!isPrivate(value))
        shown += character;
    else
        shown += highOctetsEscaped(QString(character).toUtf8());
}

// Whether octets are shown as they are, as those of nearly all names are.
bool isOrdinary(QByteArrayView octets, bool isName)
{
    return !octets.endsWith(' ') && std::all_of(octets.begin(), octets.end(), [isName](char octet) {
        return octet >= ' ' && octet <= '~' && (octet != '/' || !isName);
    });
}

QString shown(const QByteArray &octets, bool isName)
{
    if (isOrdinary(octets, isName))
        return QString::fromLatin1(octets);
    const std::optional<QString> text = fromUtf8(octets);
    // Here the private characters are the octets themselves.
    const QString plain = text ? *text : highOctetsEscaped(octets);
    QString result;
    result.reserve(plain.size());
    for (qsizetype at = 0; at < plain.size(); ++at) {
        if (!text && isPrivate(plain[at].unicode()))
            result += plain[at];
        else
            appendShown(result, plain[at], at + 1 == plain.size(), isName);
    }
    return result;
}

bool mapsBack(char16_t character)
{
    if (!isPrivate(character))
        return false;
    const auto octet = static_cast<char16_t>(character - privateBase);
    return octet >= firstHighOctet || isControl(octet) || octet == u' ' || octet == u'/';
}

} // namespace

QString shownRemoteName(const QByteArray &name)
{
    return shown(name, true);
}

QString shownRemotePath(const QByteArray &path)
{
    return shown(path, false);
}

std::optional<QByteArray> sentRemoteName(QStringView text)
{
    if (!text.isValidUtf16())
        return {};
    QByteArray octets;
    octets.reserve(text.size());
    qsizetype plainFrom = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const char16_t character = text[at].unicode();
        if (!mapsBack(character))
            continue;
        octets += text.sliced(plainFrom, at - plainFrom).toUtf8();
        octets += static_cast<char>(character - privateBase);
        plainFrom = at + 1;
    }
    return octets + text.sliced(plainFrom).toUtf8();
}

} // namespace vandrel

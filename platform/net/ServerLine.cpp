#include "platform/net/ServerLine.h"

#include <algorithm>

#include <QStringDecoder>

namespace vandrel {

namespace {

template<typename Unit>
bool endsALine(Unit unit)
{
    return unit == Unit(u'\r') || unit == Unit(u'\n') || unit == Unit(u'\0');
}

bool isUnseen(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

} // namespace

int replyNumber(QByteArrayView line)
{
    if (line.size() < 3 || line[0] < '1' || line[0] > '5' || !isAsciiDigit(line[1]) || !isAsciiDigit(line[2]))
        return 0;
    return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
}

QString readableWords(const QByteArray &octets, qsizetype longest)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString words = utf8(octets);
    if (utf8.hasError())
        words = QString::fromLatin1(octets.left(longest));
    words.truncate(longest);
    if (!words.isEmpty() && words.back().isHighSurrogate())
        words.chop(1);
    std::replace_if(words.begin(), words.end(), isUnseen, QChar(u' '));
    return words.trimmed();
}

bool breaksTheLine(QByteArrayView octets)
{
    return std::any_of(octets.begin(), octets.end(), endsALine<char>);
}

bool breaksTheLine(QStringView text)
{
    return std::any_of(text.begin(), text.end(), endsALine<QChar>);
}

} // namespace vandrel

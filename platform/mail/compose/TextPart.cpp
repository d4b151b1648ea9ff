#include "platform/mail/compose/TextPart.h"

#include <algorithm>

namespace vandrel {

namespace {

constexpr qsizetype longestLine = 78;

bool isPlainOctet(char c)
{
    return (c >= ' ' && c <= '~') || c == '\t';
}

bool isPlainLine(QByteArrayView line)
{
    return line.size() <= longestLine && std::all_of(line.begin(), line.end(), isPlainOctet)
        && !line.endsWith(' ') && !line.endsWith('\t') && !line.startsWith("From ");
}

bool isPlain(QByteArrayView lines)
{
    while (!lines.isEmpty()) {
        const qsizetype end = lines.indexOf('\n');
        if (end < 0 || !isPlainLine(lines.first(end)))
            return false;
        lines = lines.sliced(end + 1);
    }
    return true;
}

} // namespace

QByteArray textLines(const QString &text)
{
    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    if (!lines.isEmpty() && !lines.endsWith(u'\n'))
        lines += u'\n';
    return lines.toUtf8();
}

TextEncoding textEncoding(const QByteArray &lines)
{
    if (isPlain(lines))
        return TextEncoding::SevenBit;
    // An octet outside plain ASCII takes three in quoted-printable; base64 makes four of three everywhere.
    const auto plain = std::count_if(lines.begin(), lines.end(),
                                     [](char c) { return c == '\n' || (isPlainOctet(c) && c != '='); });
    const bool mostlyPlain = (lines.size() - plain) * 6 <= lines.size();
    return mostlyPlain ? TextEncoding::QuotedPrintable : TextEncoding::Base64;
}

} // namespace vandrel

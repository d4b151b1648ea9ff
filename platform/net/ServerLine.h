#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace vandrel {

/// What the line protocols have in common: the digits and the words of a server's lines, and what no line may hold.

/// True for "0" to "9" alone, whatever the locale.
constexpr bool isAsciiDigit(char octet)
{
    return octet >= '0' && octet <= '9';
}

/// The number of three digits, 100 to 599, that a reply's line begins with (RFC 959, RFC 5321); 0 where there is none.
/// What follows the digits is not looked at.
int replyNumber(QByteArrayView line);

/// A server's words as a person reads them, on one line: UTF-8 or else Latin-1, what moves or hides text (controls,
/// directions, line ends) as blanks, none at either end, and at most `longest` characters.
QString readableWords(const QByteArray &octets, qsizetype longest);

/// True where a text sent as a part of a command would end its line: it holds CR, LF or NUL.
bool breaksTheLine(QByteArrayView octets);
bool breaksTheLine(QStringView text);

} // namespace vandrel

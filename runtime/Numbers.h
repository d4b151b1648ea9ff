#pragma once

#include <concepts>

#include <QString>
#include <QStringView>

namespace vandrel {

/// The runtime's number and text conversions. All are independent of the locale.

/// Decimal text with one leading blank when `value` is not negative ("Str"): Str(12) is " 12", Str(-3) "-3".
/// At most 15 significant digits; no leading zero before the point (Str(0.5) is " .5"); exponents as "1E+20".
QString Str(double value);
template<std::integral T>
QString Str(T value)
{
    return value < 0 ? QString::number(value) : QLatin1Char(' ') + QString::number(value);
}

/// As Str, without the leading blank: the form used where a number is simply put into a text.
QString toText(double value);
template<std::integral T>
QString toText(T value)
{
    return QString::number(value);
}

/// The leading number of a text, 0 when there is none ("Val"). Blanks, tabs and line feeds are passed over
/// wherever they stand; only a point is a decimal point; "&H" and "&O" introduce hexadecimal and octal
/// numbers; "E" or "D" introduces an exponent. Raises Overflow (6) when the number does not fit a double.
double Val(QStringView text);

/// Rounds to the nearest integer, halves to even. Raises Overflow (6) when the result does not fit 16
/// (CInt) or 32 (CLng) bits or `value` is not a number.
qint16 CInt(double value);
qint32 CLng(double value);

/// Converts the whole text, blanks around it aside; a text that is not a number raises Type mismatch (13).
qint16 CInt(QStringView text);
qint32 CLng(QStringView text);

/// The text without its trailing blanks. Only U+0020 is a blank; leading blanks are kept.
QString RTrim(QStringView text);

} // namespace vandrel

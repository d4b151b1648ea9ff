#pragma once

#include <concepts>

#include <QString>
#include <QStringView>

#include "runtime/Integer.h"

namespace vandrel {

/// The runtime's number and text conversions. All are independent of the locale.

/// Whole numbers of any size. Truth values and fractions have conversions of their own, or none.
template<typename T>
concept WholeNumber = std::integral<T> && !std::same_as<T, bool>;

/// Decimal text with one leading blank when `value` is not negative ("Str"): Str(12) is " 12", Str(-3) "-3".
/// At most 15 significant digits (7 for a float); no leading zero before the point (Str(0.5) is " .5").
/// A number of more digits than that before the point, or one that would need more places than that after
/// it, has an exponent of at least two digits: " 1E+20", " 3.33333333333333E-02". Negative zero is " 0".
/// Raises Overflow (6) for what is infinite or not a number.
QString Str(double value);
QString Str(float value);
template<WholeNumber T>
QString Str(T value)
{
    return value < 0 ? QString::number(value) : QLatin1Char(' ') + QString::number(value);
}
inline QString Str(Integer value)
{
    return Str(value.value());
}
template<std::same_as<bool> T>
QString Str(T value) = delete;

/// As Str, without the leading blank: the form used where a number is simply put into a text.
QString toText(double value);
QString toText(float value);
template<WholeNumber T>
QString toText(T value)
{
    return QString::number(value);
}
inline QString toText(Integer value)
{
    return toText(value.value());
}
template<std::same_as<bool> T>
QString toText(T value) = delete;

/// The leading number of a text, 0 when there is none ("Val"). Blanks, tabs and line feeds are passed over
/// wherever they stand; a sign stands only at the start; only a point is a decimal point; "E" or "D"
/// introduces an exponent. "&H" and "&O" introduce hexadecimal and octal numbers, which are 16-bit
/// (Val("&HFFFF") is -1) or, when they do not fit, 32-bit signed patterns; a trailing "&" makes one 32-bit
/// (Val("&HFFFF&") is 65535). Raises Overflow (6) when the number does not fit a double, or 32 bits.
double Val(QStringView text);

/// Rounds to the nearest integer, halves to even. Raises Overflow (6) when the result does not fit 16
/// (CInt) or 32 (CLng) bits or `value` is not a number.
qint16 CInt(double value);
qint32 CLng(double value);

/// Converts the whole text, blanks and line ends around it aside; a text that is not a number in one of the
/// forms that Val reads raises Type mismatch (13).
qint16 CInt(QStringView text);
qint32 CLng(QStringView text);

/// The text without its trailing blanks. Only U+0020 is a blank; leading blanks are kept.
QString RTrim(QStringView text);

} // namespace vandrel

#include "runtime/Numbers.h"

#include <cmath>
#include <limits>

#include "runtime/RuntimeError.h"

namespace vandrel {

QString toText(double value)
{
    return QString::number(value, 'g', 15);
}

QString Str(double value)
{
    return value < 0 ? toText(value) : QLatin1Char(' ') + toText(value);
}

double Val(QStringView text)
{
    QString number;
    for (const QChar c : text) {
        if (c == u' ' || c == u'\t' || c == u'\n')
            continue;
        if (!c.isDigit() && c != u'.' && c != u'-' && c != u'+')
            break;
        number += c;
    }
    return number.toDouble();
}

namespace {

template<typename T>
T rounded(double value)
{
    const double nearest = std::nearbyint(value);
    if (!(nearest >= std::numeric_limits<T>::min() && nearest <= std::numeric_limits<T>::max()))
        throw RuntimeError(error::Overflow);
    return static_cast<T>(nearest);
}

double wholeNumber(QStringView text)
{
    bool isNumber = false;
    const double value = text.trimmed().toDouble(&isNumber);
    if (!isNumber)
        throw RuntimeError(error::TypeMismatch);
    return value;
}

} // namespace

qint16 CInt(double value)
{
    return rounded<qint16>(value);
}

qint32 CLng(double value)
{
    return rounded<qint32>(value);
}

qint16 CInt(QStringView text)
{
    return CInt(wholeNumber(text));
}

qint32 CLng(QStringView text)
{
    return CLng(wholeNumber(text));
}

QString RTrim(QStringView text)
{
    while (text.endsWith(u' '))
        text.chop(1);
    return text.toString();
}

} // namespace vandrel

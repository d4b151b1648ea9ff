#include "runtime/Numbers.h"

#include <cmath>
#include <limits>
#include <optional>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Text of numbers.

// A positive number as its significant digits, without trailing zeros, and the power of ten of the first.
struct Decimal {
    QByteArray digits;
    int exponent = 0;
};

Decimal decimal(double value, int precision)
{
    const QByteArray scientific = QByteArray::number(value, 'e', precision - 1);
    const auto mark = scientific.indexOf('e');
    Decimal result{scientific.left(mark), scientific.mid(mark + 1).toInt()};
    result.digits.remove(1, 1);
    while (result.digits.size() > 1 && result.digits.endsWith('0'))
        result.digits.chop(1);
    return result;
}

QByteArray withExponent(const Decimal &number)
{
    QByteArray text = number.digits.left(1);
    if (number.digits.size() > 1)
        text += '.' + number.digits.mid(1);
    const QByteArray power = QByteArray::number(std::abs(number.exponent)).rightJustified(2, '0');
    return text + (number.exponent < 0 ? "E-" : "E+") + power;
}

QByteArray withPoint(const Decimal &number)
{
    const int before = number.exponent + 1;
    if (before <= 0)
        return '.' + QByteArray(-before, '0') + number.digits;
    QByteArray text = number.digits.leftJustified(before, '0');
    if (text.size() > before)
        text.insert(before, '.');
    return text;
}

QString numberText(double value, int precision)
{
    if (!std::isfinite(value))
        throw RuntimeError(error::Overflow);
    if (value == 0)
        return QStringLiteral("0");
    const Decimal number = decimal(std::abs(value), precision);
    const auto places = number.digits.size() - 1 - number.exponent;
    const bool isLong = number.exponent >= precision || places > precision;
    const QByteArray text = isLong ? withExponent(number) : withPoint(number);
    return QString::fromLatin1(value < 0 ? '-' + text : text);
}

QString withLeadingBlank(const QString &text)
{
    return text.startsWith(u'-') ? text : u' ' + text;
}

// Numbers of texts.

bool isPassedOver(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n';
}

bool isDecimalDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

// The value of a digit in bases up to 16; -1 for what is no digit.
int digitValue(char16_t c)
{
    if (isDecimalDigit(c))
        return c - u'0';
    const char16_t lower = c | 0x20;
    return lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : -1;
}

// Reads the leading number of a text. next() is the character at hand, 0 at the end.
class NumberReader
{
public:
    enum class Blanks { PassOver, Keep };

    NumberReader(QStringView text, Blanks blanks) : m_text(text), m_blanks(blanks) { passBlanks(); }

    // Nothing when the text does not start with a number.
    std::optional<double> read();
    bool atEnd() const { return m_at >= m_text.size(); }

private:
    char16_t next() const { return atEnd() ? u'\0' : m_text[m_at].unicode(); }
    void advance();
    void passBlanks();
    bool take(QStringView anyOf);
    qsizetype takeDigits();
    void takeExponent();
    std::optional<double> readDecimal(bool isNegative);
    std::optional<double> readPattern();
    std::optional<double> readPatternOf(int base);

    QStringView m_text;
    Blanks m_blanks;
    qsizetype m_at = 0;
    QByteArray m_number;
};

void NumberReader::advance()
{
    ++m_at;
    passBlanks();
}

void NumberReader::passBlanks()
{
    while (m_blanks == Blanks::PassOver && !atEnd() && isPassedOver(m_text[m_at]))
        ++m_at;
}

bool NumberReader::take(QStringView anyOf)
{
    if (atEnd() || !anyOf.contains(m_text[m_at]))
        return false;
    advance();
    return true;
}

std::optional<double> NumberReader::read()
{
    if (take(u"&"))
        return readPattern();
    const bool isNegative = take(u"-");
    if (!isNegative)
        take(u"+");
    return readDecimal(isNegative);
}

// Appends the digits at hand to the number and counts them.
qsizetype NumberReader::takeDigits()
{
    qsizetype count = 0;
    for (; isDecimalDigit(next()); advance(), ++count)
        m_number += static_cast<char>(next());
    return count;
}

std::optional<double> NumberReader::readDecimal(bool isNegative)
{
    m_number = isNegative ? "-0" : "0";
    qsizetype digits = takeDigits();
    if (take(u".")) {
        m_number += '.';
        digits += takeDigits();
        m_number += '0';
    }
    if (digits == 0)
        return std::nullopt;
    takeExponent();
    const double value = QString::fromLatin1(m_number).toDouble();
    if (!std::isfinite(value))
        throw RuntimeError(error::Overflow);
    return value;
}

// A letter without digits behind it is no exponent, and stays.
void NumberReader::takeExponent()
{
    const qsizetype start = m_at;
    const qsizetype length = m_number.size();
    if (!take(u"eEdD"))
        return;
    m_number += take(u"-") ? "e-" : "e+";
    if (m_number.endsWith('+'))
        take(u"+");
    if (takeDigits() > 0)
        return;
    m_at = start;
    m_number.truncate(length);
}

std::optional<double> NumberReader::readPattern()
{
    if (take(u"hH"))
        return readPatternOf(16);
    if (take(u"oO"))
        return readPatternOf(8);
    return std::nullopt;
}

std::optional<double> NumberReader::readPatternOf(int base)
{
    const qsizetype start = m_at;
    quint64 pattern = 0;
    for (int digit = digitValue(next()); digit >= 0 && digit < base; digit = digitValue(next())) {
        pattern = pattern * static_cast<quint64>(base) + static_cast<quint64>(digit);
        if (pattern > std::numeric_limits<quint32>::max())
            throw RuntimeError(error::Overflow);
        advance();
    }
    if (m_at == start)
        return std::nullopt;
    if (!take(u"&") && pattern <= std::numeric_limits<quint16>::max())
        return static_cast<qint16>(pattern);
    return static_cast<qint32>(pattern);
}

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
    NumberReader reader(text.trimmed(), NumberReader::Blanks::Keep);
    const std::optional<double> value = reader.read();
    if (!value || !reader.atEnd())
        throw RuntimeError(error::TypeMismatch);
    return *value;
}

} // namespace

QString toText(double value)
{
    return numberText(value, std::numeric_limits<double>::digits10);
}

QString toText(float value)
{
    constexpr int digits = 7;
    return numberText(static_cast<double>(value), digits);
}

QString Str(double value)
{
    return withLeadingBlank(toText(value));
}

QString Str(float value)
{
    return withLeadingBlank(toText(value));
}

double Val(QStringView text)
{
    return NumberReader(text, NumberReader::Blanks::PassOver).read().value_or(0);
}

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

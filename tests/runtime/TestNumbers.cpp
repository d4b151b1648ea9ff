#include <cmath>
#include <limits>
#include <random>

#include <QLocale>
#include <QTest>

#include "runtime/Integer.h"
#include "runtime/Numbers.h"
#include "runtime/RuntimeError.h"
#include "runtime/SizeText.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

namespace {

constexpr unsigned seed = 20261121;
constexpr int rounds = 20'000;

// Rounds a number given in halves to the nearest integer, halves to even, without floating point.
qint64 roundedHalves(qint64 halves)
{
    const qint64 below = halves >= 0 ? halves / 2 : -((1 - halves) / 2);
    if (halves == below * 2)
        return below;
    return below % 2 == 0 ? below : below + 1;
}

// A finite double of any size: random bits.
double anyDouble(std::mt19937_64 &random)
{
    for (;;) {
        const quint64 bits = random();
        double value = 0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        // Close to the largest number, rounding to 15 digits may go past it.
        if (std::isfinite(value) && std::abs(value) < 1e308)
            return value;
    }
}

} // namespace

class TestNumbers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textOfNumbers_data();
    void textOfNumbers();
    void textOfWholeNumbers();
    void textOfSingles();
    void whatIsNoNumberHasNoText();
    void textIsReadBackToFifteenDigits();
    void textHasNoMoreThanFifteenDigits();
    void valueOfTexts_data();
    void valueOfTexts();
    void valueTooLarge_data();
    void valueTooLarge();
    void valueOfVeryLongTexts();
    void valueOfArbitraryTexts();
    void conversionsIgnoreTheLocale();
    void roundingToEven_data();
    void roundingToEven();
    void roundingAgreesWithWholeArithmetic();
    void roundingIsMonotonic();
    void roundingPastTheRange();
    void convertedTexts_data();
    void convertedTexts();
    void textsThatAreNoNumbers_data();
    void textsThatAreNoNumbers();
    void trailingBlanks();
    void sizes();
};

void TestNumbers::textOfNumbers_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    const QList<std::pair<double, QString>> rows{
        {0, u" 0"_qs},
        {-0.0, u" 0"_qs},
        {12, u" 12"_qs},
        {-3, u"-3"_qs},
        {0.5, u" .5"_qs},
        {-0.5, u"-.5"_qs},
        {2.5, u" 2.5"_qs},
        {100, u" 100"_qs},
        {0.01, u" .01"_qs},
        {0.1, u" .1"_qs},
        {0.1 + 0.2, u" .3"_qs},
        {1.0 / 3, u" .333333333333333"_qs},
        {2.0 / 3, u" .666666666666667"_qs},
        {1.0 / 30, u" 3.33333333333333E-02"_qs},
        {-1.0 / 30, u"-3.33333333333333E-02"_qs},
        {1e-12, u" .000000000001"_qs},
        {1e-15, u" .000000000000001"_qs},
        {1e-16, u" 1E-16"_qs},
        {1.5e-15, u" 1.5E-15"_qs},
        {123456789012345, u" 123456789012345"_qs},
        {1234567890123456, u" 1.23456789012346E+15"_qs},
        {999999999999999, u" 999999999999999"_qs},
        {999999999999999.9, u" 1E+15"_qs},
        {1e14, u" 100000000000000"_qs},
        {1e15, u" 1E+15"_qs},
        {1e20, u" 1E+20"_qs},
        {-1e20, u"-1E+20"_qs},
        {1.5e100, u" 1.5E+100"_qs},
        {1e-100, u" 1E-100"_qs},
        {5e-324, u" 4.94065645841247E-324"_qs},
        {1.7976931348623157e308, u" 1.79769313486232E+308"_qs},
        {123456.789, u" 123456.789"_qs},
        {86399.999, u" 86399.999"_qs},
    };
    for (const auto &[value, text] : rows)
        QTest::addRow("%s", qPrintable(text)) << value << text;
}

void TestNumbers::textOfNumbers()
{
    QFETCH(const double, value);
    QFETCH(const QString, text);
    QCOMPARE(Str(value), text);
    QCOMPARE(toText(value), text.startsWith(u' ') ? text.mid(1) : text);
}

void TestNumbers::textOfWholeNumbers()
{
    QCOMPARE(Str(0), u" 0"_qs);
    QCOMPARE(Str(12), u" 12"_qs);
    QCOMPARE(Str(-3), u"-3"_qs);
    QCOMPARE(Str(qint16{-32768}), u"-32768"_qs);
    QCOMPARE(Str(std::numeric_limits<qint64>::min()), u"-9223372036854775808"_qs);
    QCOMPARE(Str(std::numeric_limits<quint64>::max()), u" 18446744073709551615"_qs);
    QCOMPARE(Str(Integer(7)), u" 7"_qs);
    QCOMPARE(toText(12), u"12"_qs);
    QCOMPARE(toText(-3), u"-3"_qs);
    QCOMPARE(toText(Integer(-7)), u"-7"_qs);
}

void TestNumbers::textOfSingles()
{
    QCOMPARE(toText(8.25F), u"8.25"_qs);
    QCOMPARE(toText(9.6F), u"9.6"_qs);
    QCOMPARE(Str(0.1F), u" .1"_qs);
    QCOMPARE(toText(1.0F / 3), u".3333333"_qs);
    QCOMPARE(toText(16777216.0F), u"1.677722E+07"_qs);
}

void TestNumbers::whatIsNoNumberHasNoText()
{
    const double infinity = std::numeric_limits<double>::infinity();
    QCOMPARE(test::numberOf([&] { Str(infinity); }), error::Overflow);
    QCOMPARE(test::numberOf([&] { Str(-infinity); }), error::Overflow);
    QCOMPARE(test::numberOf([] { toText(std::nan("")); }), error::Overflow);
}

void TestNumbers::textIsReadBackToFifteenDigits()
{
    std::mt19937_64 random(seed);
    for (int i = 0; i < rounds; ++i) {
        const double value = anyDouble(random);
        const double again = Val(Str(value));
        // What has 15 digits or less is read back exactly, so a second turn changes nothing.
        QCOMPARE(Str(again), Str(value));
        if (std::abs(value) > 1e-290)
            QVERIFY2(std::abs(again / value - 1) <= 5e-15, qPrintable(Str(value)));
        const auto whole = static_cast<qint32>(random());
        QCOMPARE(Val(Str(whole)), double{static_cast<double>(whole)});
        QCOMPARE(Str(static_cast<double>(whole)), Str(whole));
    }
}

void TestNumbers::textHasNoMoreThanFifteenDigits()
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> exponent(-20, 20);
    for (int i = 0; i < rounds; ++i) {
        const double value = std::pow(10, exponent(random));
        const QString text = Str(value);
        const QString digits = text.section(u'E', 0, 0).remove(u'.').trimmed();
        QVERIFY2(digits.size() <= 15, qPrintable(text));
        QVERIFY2(!text.contains(u'.') || !digits.endsWith(u'0'), qPrintable(text));
        QVERIFY2(text.startsWith(u' ') && !text.startsWith(u" 0"), qPrintable(text));
    }
}

void TestNumbers::valueOfTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    const QList<std::pair<QString, double>> rows{
        {u""_qs, 0},
        {u"   "_qs, 0},
        {u"abc"_qs, 0},
        {u"12"_qs, 12},
        {u"  12  "_qs, 12},
        {u" 1615 198th Street"_qs, 1615198},
        {u"1\t2\n3"_qs, 123},
        {u"1\r2"_qs, 1},
        {u"2.5s"_qs, 2.5},
        {u"2.6"_qs, 2.6},
        {u".5"_qs, 0.5},
        {u"5."_qs, 5},
        {u"."_qs, 0},
        {u"1.5.2"_qs, 1.5},
        {u"1,5"_qs, 1},
        {u"-"_qs, 0},
        {u"+"_qs, 0},
        {u"--5"_qs, 0},
        {u"+-5"_qs, 0},
        {u"-3"_qs, -3},
        {u"- 3"_qs, -3},
        {u"+3"_qs, 3},
        {u"3-2"_qs, 3},
        {u"5%"_qs, 5},
        {u"1E3"_qs, 1000},
        {u"1e3"_qs, 1000},
        {u"1D3"_qs, 1000},
        {u"1d+3"_qs, 1000},
        {u"1 E - 3"_qs, 0.001},
        {u"25E-1x"_qs, 2.5},
        {u"1E"_qs, 1},
        {u"1E+"_qs, 1},
        {u"1E+-3"_qs, 1},
        {u"1E2.5"_qs, 100},
        {u"E5"_qs, 0},
        {u".E5"_qs, 0},
        {u"1E-999"_qs, 0},
        {u"0E999"_qs, 0},
        {u"&HFF"_qs, 255},
        {u"&hff"_qs, 255},
        {u"& H F F"_qs, 255},
        {u"&H7FFF"_qs, 32767},
        {u"&H8000"_qs, -32768},
        {u"&HFFFF"_qs, -1},
        {u"&HFFFF&"_qs, 65535},
        {u"&H10000"_qs, 65536},
        {u"&H7FFFFFFF"_qs, 2147483647},
        {u"&H80000000"_qs, -2147483648.0},
        {u"&HFFFFFFFF"_qs, -1},
        {u"&H00000000000000FF"_qs, 255},
        {u"&H"_qs, 0},
        {u"&HG"_qs, 0},
        {u"&H1G"_qs, 1},
        {u"&O17"_qs, 15},
        {u"&o17"_qs, 15},
        {u"&O18"_qs, 1},
        {u"&O8"_qs, 0},
        {u"&O177777"_qs, -1},
        {u"&O200000"_qs, 65536},
        {u"&O37777777777"_qs, -1},
        {u"-&HFF"_qs, 0},
        {u"&"_qs, 0},
        {u"&X1"_qs, 0},
        {u"\u0661\u0662"_qs, 0}, // Arabic-Indic digits
        {u"\uFF11"_qs, 0}, // a full-width digit
        {u"1\u0662"_qs, 1},
        {u"1\u00A02"_qs, 1}, // a no-break space is no blank
        {u"inf"_qs, 0},
        {u"nan"_qs, 0},
        {u"0x10"_qs, 0},
    };
    for (int i = 0; i < rows.size(); ++i)
        QTest::addRow("%d %s", i, qPrintable(rows[i].first)) << rows[i].first << rows[i].second;
}

void TestNumbers::valueOfTexts()
{
    QFETCH(const QString, text);
    QFETCH(const double, value);
    QCOMPARE(Val(text), value);
}

void TestNumbers::valueTooLarge_data()
{
    QTest::addColumn<QString>("text");
    QTest::addRow("a large exponent") << u"1E309"_qs;
    QTest::addRow("negative") << u"-1E309"_qs;
    QTest::addRow("an absurd exponent") << u"1E99999999999999999999"_qs;
    QTest::addRow("many digits") << QString(400, u'9');
    QTest::addRow("more than 32 bits") << u"&H100000000"_qs;
    QTest::addRow("more than 64 bits") << u"&H1"_qs + QString(40, u'0');
    QTest::addRow("octal") << u"&O40000000000"_qs;
}

void TestNumbers::valueTooLarge()
{
    QFETCH(const QString, text);
    QCOMPARE(test::numberOf([&] { Val(text); }), error::Overflow);
}

void TestNumbers::valueOfVeryLongTexts()
{
    QCOMPARE(Val(QString(1'000'000, u'0') + u'7'), 7.0);
    QCOMPARE(Val(QString(1'000'000, u' ') + u'7'), 7.0);
    QCOMPARE(Val(u"."_qs + QString(1'000'000, u'0') + u'7'), 0.0);
    QCOMPARE(Val(u"&H"_qs + QString(1'000'000, u'0') + u'7'), 7.0);
}

// Whatever is typed gives a number or Overflow, and blanks make no difference anywhere.
void TestNumbers::valueOfArbitraryTexts()
{
    const QString alphabet = u"0123456789019.-+EeDd&HhOoAaFf %x"_qs;
    std::mt19937 random(seed);
    std::uniform_int_distribution<qsizetype> letter(0, alphabet.size() - 1);
    std::uniform_int_distribution<int> length(0, 10);
    for (int i = 0; i < rounds; ++i) {
        QString text;
        QString spaced;
        for (int left = length(random); left > 0; --left) {
            const QChar c = alphabet[letter(random)];
            text += c;
            spaced += QString(left % 3, u' ') + c + u'\t';
        }
        double value = 0;
        double spacedValue = 0;
        const int failure = test::numberOf([&] { value = Val(text); });
        QVERIFY2(failure == 0 || failure == error::Overflow, qPrintable(text));
        QCOMPARE(test::numberOf([&] { spacedValue = Val(spaced); }), failure);
        QVERIFY2(value == spacedValue, qPrintable(text));
        QVERIFY2(std::isfinite(value), qPrintable(text));
    }
}

void TestNumbers::conversionsIgnoreTheLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString text = Str(1234.5);
    const double value = Val(u"1234.5");
    const qint32 number = CLng(u"1.5E3");
    QLocale::setDefault(before);
    QCOMPARE(text, u" 1234.5"_qs);
    QCOMPARE(value, 1234.5);
    QCOMPARE(number, 1500);
}

void TestNumbers::roundingToEven_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("rounded");
    QTest::addRow("0.5") << 0.5 << 0;
    QTest::addRow("1.5") << 1.5 << 2;
    QTest::addRow("2.5") << 2.5 << 2;
    QTest::addRow("2.6") << 2.6 << 3;
    QTest::addRow("-0.5") << -0.5 << 0;
    QTest::addRow("-1.5") << -1.5 << -2;
    QTest::addRow("-2.5") << -2.5 << -2;
    QTest::addRow("just below a half") << std::nextafter(0.5, 0) << 0;
    QTest::addRow("just above a half") << std::nextafter(0.5, 1) << 1;
    QTest::addRow("largest") << 32767.49 << 32767;
    QTest::addRow("smallest") << -32768.5 << -32768;
}

void TestNumbers::roundingToEven()
{
    QFETCH(const double, value);
    QFETCH(const int, rounded);
    QCOMPARE(int{CInt(value)}, rounded);
    QCOMPARE(CLng(value), rounded);
}

void TestNumbers::roundingAgreesWithWholeArithmetic()
{
    for (qint64 halves = -2 * 33000; halves <= 2 * 33000; ++halves) {
        const qint64 expected = roundedHalves(halves);
        const double value = static_cast<double>(halves) / 2;
        QCOMPARE(qint64{CLng(value)}, expected);
        const bool fits = expected >= -32768 && expected <= 32767;
        qint16 given = 0;
        QCOMPARE(test::numberOf([&] { given = CInt(value); }), fits ? 0 : error::Overflow);
        if (fits)
            QCOMPARE(qint64{given}, expected);
    }
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<qint64> any(-2LL * 2147483648, 2LL * 2147483647);
    for (int i = 0; i < rounds; ++i) {
        const qint64 halves = any(random);
        QCOMPARE(qint64{CLng(static_cast<double>(halves) / 2)}, roundedHalves(halves));
    }
}

void TestNumbers::roundingIsMonotonic()
{
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> any(-32768, 32767);
    std::uniform_real_distribution<double> near(0, 2);
    for (int i = 0; i < rounds; ++i) {
        const double low = any(random);
        const double high = std::min(low + near(random), 32767.0);
        QVERIFY(CInt(low) <= CInt(high));
        QVERIFY(std::abs(CInt(low) - low) <= 0.5);
    }
}

void TestNumbers::roundingPastTheRange()
{
    for (const double value : {32767.5, 32768.0, -32768.51, -32769.0, 1e300, -1e300})
        QCOMPARE(test::numberOf([value] { CInt(value); }), error::Overflow);
    for (const double value : {2147483647.5, 2147483648.0, -2147483648.6, 1e300, -1e300})
        QCOMPARE(test::numberOf([value] { CLng(value); }), error::Overflow);
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        QCOMPARE(test::numberOf([value] { CInt(value); }), error::Overflow);
        QCOMPARE(test::numberOf([value] { CLng(value); }), error::Overflow);
    }
    QCOMPARE(CLng(2147483647.4), 2147483647);
    QCOMPARE(CLng(-2147483648.5), std::numeric_limits<qint32>::min());
}

void TestNumbers::convertedTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::addRow("whole") << u"12"_qs << 12;
    QTest::addRow("negative") << u"-12"_qs << -12;
    QTest::addRow("blanks around") << u"  12 "_qs << 12;
    QTest::addRow("line end behind") << u"12\r\n"_qs << 12;
    QTest::addRow("half") << u"2.5"_qs << 2;
    QTest::addRow("exponent") << u"1.5D2"_qs << 150;
    QTest::addRow("hexadecimal") << u"&H1F"_qs << 31;
}

void TestNumbers::convertedTexts()
{
    QFETCH(const QString, text);
    QFETCH(const int, number);
    QCOMPARE(int{CInt(text)}, number);
    QCOMPARE(CLng(text), number);
}

void TestNumbers::textsThatAreNoNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("failure");
    const QStringList notNumbers{u""_qs,    u"  "_qs,  u"abc"_qs, u"1x"_qs,  u"1 2"_qs,   u"1.5.2"_qs,
                                 u"-"_qs,   u"."_qs,   u"1E"_qs,  u"inf"_qs, u"nan"_qs,   u"&H"_qs,
                                 u"0x1"_qs, u"1,5"_qs, u"&HG"_qs, u"--1"_qs, u"\u0661"_qs};
    for (int i = 0; i < notNumbers.size(); ++i)
        QTest::addRow("%d %s", i, qPrintable(notNumbers[i])) << notNumbers[i] << error::TypeMismatch;
    QTest::addRow("too large") << u"1E400"_qs << error::Overflow;
    QTest::addRow("past 32 bits") << u"2147483648"_qs << error::Overflow;
}

void TestNumbers::textsThatAreNoNumbers()
{
    QFETCH(const QString, text);
    QFETCH(const int, failure);
    QCOMPARE(test::numberOf([&] { CInt(text); }), failure);
    QCOMPARE(test::numberOf([&] { CLng(text); }), failure);
}

void TestNumbers::trailingBlanks()
{
    QCOMPARE(RTrim(u"  text  "), u"  text"_qs);
    QCOMPARE(RTrim(u"text"), u"text"_qs);
    QCOMPARE(RTrim(u"text \t"), u"text \t"_qs);
    QCOMPARE(RTrim(u"text\u00A0"), u"text\u00A0"_qs);
    QCOMPARE(RTrim(u"   "), QString());
    QCOMPARE(RTrim(u""), QString());
}

void TestNumbers::sizes()
{
    QCOMPARE(sizeText(0), u"0 bytes"_qs);
    QCOMPARE(sizeText(999), u"999 bytes"_qs);
    QCOMPARE(sizeText(1500), u"1.5 kB"_qs);
    QCOMPARE(sizeText(1'234'567'890), u"1.2 GB"_qs);
    QLocale::setDefault(QLocale(QLocale::German));
    QCOMPARE(sizeText(1500), u"1.5 kB"_qs);
    QLocale::setDefault(QLocale::c());
}

QTEST_APPLESS_MAIN(TestNumbers)
#include "TestNumbers.moc"

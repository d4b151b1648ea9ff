#include <QTest>

#include "platform/net/SaslResponses.h"
#include "platform/net/ServerLine.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// What the line protocols have in common: numbers, words, forbidden octets, and the answers of a login.
class TestServerLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbers_data();
    void numbers();
    void digits();
    void words_data();
    void words();
    void wordsAreBounded();
    void whatBreaksALine();
    void plain();
    void cramMd5();
};

void TestServerLine::numbers_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("number");
    QTest::newRow("preliminary") << QByteArray("150 here it comes") << 150;
    QTest::newRow("more to come") << QByteArray("250-first") << 250;
    QTest::newRow("the largest") << QByteArray("599") << 599;
    QTest::newRow("what follows is not looked at") << QByteArray("2200") << 220;
    for (const char *line : {"", "2", "22", "2x0 a", "22x", "000 a", "099 a", "600 a", "999", " 220", "+220",
                             "\xFF\xFE\xFD", "\xB2\xB2\xB0"})
        QTest::newRow(*line ? line : "nothing") << QByteArray(line) << 0;
}

void TestServerLine::numbers()
{
    QFETCH(QByteArray, line);
    QTEST(replyNumber(line), "number");
}

void TestServerLine::digits()
{
    int count = 0;
    for (int octet = 0; octet < 256; ++octet)
        count += isAsciiDigit(static_cast<char>(octet)) ? 1 : 0;
    QCOMPARE(count, 10);
    QVERIFY(isAsciiDigit('0') && isAsciiDigit('9'));
}

void TestServerLine::words_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<QString>("shown");
    QTest::newRow("UTF-8") << QByteArray("caf\xC3\xA9") << u"caf\u00E9"_s;
    QTest::newRow("Latin-1") << QByteArray("caf\xE9") << u"caf\u00E9"_s;
    QTest::newRow("half a character") << QByteArray("caf\xC3") << u"caf\u00C3"_s;
    QTest::newRow("controls") << QByteArray("a\0b\x1b[2J\r\nc\x7f\t", 11) << u"a b [2J  c"_s;
    QTest::newRow("directions") << QByteArray("right \xE2\x80\xAE left") << u"right   left"_s;
    QTest::newRow("line ends of Unicode") << QByteArray("a\xE2\x80\xA8"
                                                        "b\xE2\x80\xA9"
                                                        "c")
                                          << u"a b c"_s;
    QTest::newRow("blanks around") << QByteArray("  a b \t") << u"a b"_s;
    QTest::newRow("nothing") << QByteArray() << QString();
}

void TestServerLine::words()
{
    QFETCH(QByteArray, octets);
    QTEST(readableWords(octets, 100), "shown");
}

void TestServerLine::wordsAreBounded()
{
    QCOMPARE(readableWords(QByteArray(100'000, 'x'), 300), QString(300, u'x'));
    QCOMPARE(readableWords(QByteArray(100'000, '\xE9'), 300), QString(300, u'\u00E9'));
    // A character that is long in octets is cut nowhere but at its ends.
    QCOMPARE(readableWords(QByteArray("\xC3\xA9").repeated(500), 300), QString(300, u'\u00E9'));
    QCOMPARE(readableWords("ab\xF0\x9F\x98\x80", 3), u"ab"_s);
}

void TestServerLine::whatBreaksALine()
{
    QVERIFY(!breaksTheLine(QByteArrayView()));
    QVERIFY(!breaksTheLine(QByteArrayView("a b\t\x0B\xE9")));
    QVERIFY(!breaksTheLine(QStringView(u"a b\u2028")));
    for (const char octet : {'\r', '\n', '\0'}) {
        QVERIFY(breaksTheLine(QByteArray("a") + octet + "b"));
        QVERIFY(breaksTheLine(QString(u"a"_s + QLatin1Char(octet))));
    }
}

// The example of RFC 4616.
void TestServerLine::plain()
{
    QCOMPARE(QByteArray::fromBase64(saslPlainResponse("tim", "tanstaaftanstaaf")),
             QByteArray("\0tim\0tanstaaftanstaaf", 21));
}

// The example of RFC 2195.
void TestServerLine::cramMd5()
{
    const QByteArray challenge = QByteArray("<1896.697170952@postoffice.reston.mci.net>").toBase64();
    for (const QByteArray &sent : {challenge, ' ' + challenge + " \t"})
        QCOMPARE(QByteArray::fromBase64(saslCramMd5Response("tim", "tanstaaftanstaaf", sent)),
                 QByteArray("tim b913a602c7eda7a495b4e6e7334d3890"));
}

QTEST_GUILESS_MAIN(TestServerLine)
#include "TestServerLine.moc"

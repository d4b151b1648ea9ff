#include <QTest>

#include "platform/richtext/CodePages.h"

using namespace vandrel;

class TestCodePages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QByteArray>("octets");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, int page, const char *octets, const char16_t *text) {
            QTest::newRow(name) << page << QByteArray(octets) << QString::fromUtf16(text);
        };
        row("western", 1252, "\xE9\x80\x93", u"é€“");
        row("central european", 1250, "\xB9\xE8\xF8", u"ąčř");
        row("cyrillic", 1251, "\xCF\xF0\xE8", u"При");
        row("greek", 1253, "\xC1\xE1", u"Αα");
        row("turkish", 1254, "\xFD\xDE", u"ıŞ");
        row("hebrew", 1255, "\xF9\xEC", u"של");
        row("arabic", 1256, "\xC7\xE1", u"ال");
        row("baltic", 1257, "\xD0\xE8", u"Šč");
        row("vietnamese", 1258, "\xFE\xD0", u"₫Đ");
        row("thai", 874, "\xA1\xC2", u"กย");
        row("dos", 437, "\x82\xE1", u"éß");
        row("dos latin", 850, "\x82\xD5", u"éı");
        row("mac", 10000, "\x8E\xA5", u"é•");
        row("japanese", 932, "\x83\x5C\x8E\xE8", u"ソ手");
        row("simplified chinese", 936, "\xC4\xE3", u"你");
        row("traditional chinese", 950, "\xA7\x41", u"你");
        row("korean", 949, "\xC7\xD1", u"한");
        row("johab", 1361, "\xD0\x65", u"한");
        row("utf-8", 65001, "\xC3\xA9\xF0\x9D\x84\x9E", u"é𝄞");
        row("symbols", codepage::Symbol, "\xB7 a", u"\uF0B7 \uF061");
        row("unknown page is western", 4711, "\xE9", u"é");
    }

    void decodes()
    {
        QFETCH(int, page);
        QFETCH(QByteArray, octets);
        CodePageDecoder decoder;
        QTEST(decoder.decode(page, octets), "text");
    }

    void losesNoOctet()
    {
        CodePageDecoder decoder;
        QCOMPARE(decoder.decode(1252, "\x81"), QString(QChar(0x81)));
        QCOMPARE(decoder.decode(932, "a\x83"), QString(u'a') + QChar(0x83));
        QCOMPARE(decoder.decode(65001, "\xC3(\xFF"), QString(QChar(0xC3)) + u'(' + QChar(0xFF));
    }

    void isIndependentOfEarlierText()
    {
        CodePageDecoder decoder;
        decoder.decode(932, "\x83");
        QCOMPARE(decoder.decode(932, "A"), QStringLiteral("A"));
    }

    void decodesLongTexts()
    {
        CodePageDecoder decoder;
        QCOMPARE(decoder.decode(932, QByteArray("\x83\x5C").repeated(5000)), QString(5000, QChar(0x30BD)));
    }

    void knowsCharsets()
    {
        QCOMPARE(codePageOfCharset(0), 1252);
        QCOMPARE(codePageOfCharset(128), 932);
        QCOMPARE(codePageOfCharset(238), 1250);
        QCOMPARE(codePageOfCharset(2), codepage::Symbol);
        QCOMPARE(codePageOfCharset(1), 0);
        QCOMPARE(codePageOfCharset(256), 0);
        QCOMPARE(codePageOfCharset(-1), 0);
        QVERIFY(isKnownCodePage(1252));
        QVERIFY(isKnownCodePage(932));
        QVERIFY(!isKnownCodePage(0));
        QVERIFY(!isKnownCodePage(99999));
    }
};

QTEST_APPLESS_MAIN(TestCodePages)
#include "TestCodePages.moc"

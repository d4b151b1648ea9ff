// Documents made to hurt: each ends in bounded time with what can be shown, or with the reader's own error.
#include <QTest>
#include <QTextBlock>
#include <QTextList>
#include <QTextTable>

#include "RtfDescription.h"
#include "platform/richtext/RtfReader.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

QByteArray repeated(const QByteArray &what, int count)
{
    return what.repeated(count);
}

QByteArray numbered(const QByteArray &before, int count, const QByteArray &after)
{
    QByteArray all;
    for (int i = 1; i <= count; ++i)
        all += before + QByteArray::number(i) + after;
    return all;
}

const QByteArray start = "{\\rtf1\\ansi ";

} // namespace

class TestRtfReaderHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Each shows the expected text, or at least begins with it.
    void survives_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &body, const QString &text) {
            QTest::newRow(name) << start + body << text;
        };
        row("braces, deep", "a" + repeated("{", 200'000) + 'b' + repeated("}", 200'000) + "c}", u"ac"_qs);
        row("braces, unclosed", "a" + repeated("{", 200'000), u"a"_qs);
        row("braces, deep and often", repeated(repeated("{", 4000) + repeated("}", 4000), 20) + "a}",
            u"a"_qs);
        row("deep formatting", repeated("{\\b a", 4000) + repeated("}", 4000) + '}', QString(4000, u'a'));
        row("surplus braces", "a}}}}b", u"a"_qs);
        row("no closing brace", "a{\\b b", u"ab"_qs);
        row("backslash at the end", "a\\", u"a"_qs);
        row("only the start", "", QString());
        row("binary of negative length", "a{\\bin-5 b}c}", u"abc"_qs);
        row("binary past the end", "a\\bin2147483647 b}", u"a"_qs);
        row("binary over braces", "a\\bin3 }}}b}", u"ab"_qs);
        row("huge numbers", "\\fs99999999999\\li-99999999999\\sl99999999999\\b9999999999\\cf2147483647 a}",
            u"a"_qs);
        row("huge \\uc", "\\uc2147483647\\u65?bcd{e}}", u"Ae"_qs);
        row("negative \\uc", "\\uc-5\\u65 b}", u"Ab"_qs);
        row("long word", "\\" + repeated("a", 100'000) + " b}", QString());
        row("NULs", QByteArray("a\0b\0}", 5), u"ab"_qs);
        row("40,000 fonts", "{\\fonttbl" + numbered("{\\f", 40'000, " F;}") + "}\\f40000 a}", u"a"_qs);
        row("more fonts than are kept", "{\\fonttbl" + numbered("\\f", 70'000, " F;") + "}\\f70000 a}",
            u"a"_qs);
        row("1,000,000 colours", "{\\colortbl" + repeated("\\red1;", 1'000'000) + "}\\cf999999 a}", u"a"_qs);
        row("style based on itself", "{\\stylesheet{\\s1\\sbasedon1\\b x;}}\\s1 a}", u"a"_qs);
        row("styles in a circle", "{\\stylesheet{\\s1\\sbasedon2 x;}{\\s2\\sbasedon1 y;}}\\s1 a}", u"a"_qs);
        row("styles in a long chain",
            "{\\stylesheet" + numbered("{\\sbasedon7\\s", 10'000, " x;}") + "}\\s7 a}", u"a"_qs);
        row("one style for each paragraph", numbered("\\s", 20'000, " a\\par") + '}', u"a\na"_qs);
        row("list of no list", "{\\listtext 1}\\ls5\\ilvl99 a\\par\\ls-4\\ilvl-4 b}", u"1a\nb"_qs);
        row("list level without levels",
            "{\\*\\listtable{\\list\\listid1}}{\\*\\listoverridetable{\\listoverride\\listid1\\ls1}}\\ls1 a}",
            u"a"_qs);
        row("row without anything", "\\row\\row\\row a}", u"a"_qs);
        row("cell edges that go back",
            "\\trowd\\cellx500\\cellx-900\\cellx99999999\\intbl a\\cell b\\cell c\\cell\\row}",
            u"[a[b[c]"_qs);
        row("cells without row", repeated("a\\cell ", 3) + '}', u"[a[a[a]"_qs);
        row("merge without partner",
            "\\trowd\\clvmrg\\cellx900\\clmrg\\cellx1800\\intbl a\\cell b\\cell\\row}", u"[a\nb]"_qs);
        row("nested row without table", "{\\*\\nesttableprops\\nestrow}a\\nestcell b}", u"[a]b"_qs);
        row("picture of absurd size",
            "{\\pict\\pngblip 89504e470d0a1a0a0000000d49484452ffffffffffffffff0806000000}a}", u"#a"_qs);
        row("broken hexadecimal picture", "{\\pict\\pngblip zz8}a}", u"#a"_qs);
        row("picture that ends early", "a{\\pict\\pngblip 8950", u"a#"_qs);
        row("nested alternatives", "a" + repeated("{\\upr{", 100'000), u"a"_qs);
        row("fields in fields",
            repeated("{\\field{\\*\\fldinst X}{\\fldrslt ", 1000) + "a" + repeated("}}", 1000) + '}',
            u"a"_qs);
        row("instruction in instruction", "a" + repeated("{\\field{\\*\\fldinst ", 100'000), u"a"_qs);
        row("notes in notes", "a" + repeated("{\\footnote b", 1000) + repeated("}", 1000) + '}',
            u"a#\nbb"_qs);
        row("text boxes in text boxes",
            repeated("{\\shp{\\*\\shpinst{\\shptxt ", 1000) + "a" + repeated("}}}", 1000) + "b}", u"a\nb"_qs);
        row("objects in objects",
            repeated("{\\object{\\result ", 1000) + "{\\pict\\pngblip 00}" + repeated("}}", 1000) + "a}",
            u"#a"_qs);
        row("remote template", "{\\*\\template http://evil.example/x.dot}a}", u"a"_qs);
        row("roles that end in another order",
            "{\\field{\\fldrslt a{\\footnote b\\sect c}\\sect}}{\\shptxt\\cell d\\row}e}", u"a"_qs);
        row("end of a document in a table in a note", "\\trowd\\cellx9\\intbl a{\\footnote\\intbl b\\cell",
            u"a"_qs);
    }

    void survives()
    {
        QFETCH(QByteArray, rtf);
        QFETCH(QString, text);
        const auto loaded = load(rtf);
        QVERIFY(loaded.document);
        const QString shown = shownText(*loaded.document);
        QVERIFY2(shown.startsWith(text), qPrintable(shown.left(200)));
    }

    // The text is all there, whatever became of the structure.
    void boundsStructure_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<int>("letters");
        const auto row = [](const char *name, const QByteArray &body, int letters) {
            QTest::newRow(name) << start + body << letters;
        };
        const QByteArray rowOfOne = "\\trowd\\cellx1000\\pard\\intbl x\\cell\\row ";
        row("a row of 100,000 cells",
            "\\trowd" + numbered("\\cellx", 100'000, "") + "\\pard\\intbl " + repeated("x\\cell ", 100'000)
                + "\\row}",
            100'000);
        row("more rows than cells are allowed", repeated(rowOfOne, 60'000) + '}', 60'000);
        row("many tables", repeated(rowOfOne + "\\pard\\par ", 10'000) + '}', 10'000);
        row(
            "rows of ever other edges",
            [] {
                QByteArray rows;
                for (int i = 0; i < 3000; ++i)
                    rows += "\\trowd\\cellx" + QByteArray::number(900 + i % 97 * 31) + "\\cellx"
                        + QByteArray::number(5000 + i % 53 * 37) + "\\pard\\intbl x\\cell x\\cell\\row ";
                return rows + '}';
            }(),
            6000);
        row(
            "rows of ever other lengths",
            [] {
                QByteArray rows;
                for (int i = 0; i < 2000; ++i)
                    rows += "\\trowd" + numbered("\\cellx" + QByteArray::number(i % 90 + 1), i % 40 + 1, "")
                        + "\\pard\\intbl " + repeated("x\\cell ", i % 40 + 1) + "\\row ";
                return rows + '}';
            }(),
            41'000);
        row("3,000 tables in each other",
            numbered("\\pard\\intbl\\itap", 3000, " x\\par ")
                + repeated("\\nestcell{\\*\\nesttableprops\\trowd\\cellx9\\nestrow}", 3000) + '}',
            3000);
        row("depth that goes up and down", repeated("\\pard\\itap8 x\\par\\itap0 x\\par ", 10'000) + '}',
            20'000);
        row("one list of 20,000 bullets",
            "{\\*\\listtable{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01o;}}\\listid1}}{\\*"
            "\\listoverridetable{\\listoverride"
            "\\listid1\\ls1}}\\ls1 "
                + repeated("x\\par ", 20'000) + '}',
            20'000);
        row("list levels that alternate",
            "{\\*\\listtable{\\list{\\listlevel{\\leveltext\\'01\\'00;}}\\listid1}}{\\*\\listoverridetable{"
            "\\listoverride\\listid1\\ls1}}"
                + repeated("\\pard\\ls1 x\\par\\ilvl1 x\\par ", 2000) + '}',
            4000);
        row("a list for each paragraph",
            numbered("\\pard{\\*\\pn\\pnlvlbody\\pndec\\pnstart", 5000, "}x\\par ") + '}', 5000);
        row("a format for each run", numbered("\\fs", 4000, " x") + numbered("\\lang", 30'000, " x") + '}',
            34'000);
        row("a line of a million characters", repeated("x", 1'000'000) + '}', 1'000'000);
        row("100,000 runs", repeated("{\\b x}{\\i x}", 50'000) + '}', 100'000);
        row("100,000 paragraphs", repeated("x\\par ", 100'000) + '}', 100'000);
        row("bookmarks", numbered("{\\*\\bkmkstart b", 50'000, "}") + "x}", 1);
        row("sections", repeated("x\\sect\\sectd\\cols2 ", 20'000) + '}', 20'000);
    }

    void boundsStructure()
    {
        QFETCH(QByteArray, rtf);
        const auto loaded = load(rtf);
        QVERIFY(loaded.document);
        QTEST(int(loaded.document->toRawText().count(u'x')), "letters");
    }

    void refusesMoreTextThanTheLimit()
    {
        RtfLimits limits;
        limits.characters = 1000;
        DocumentProgress progress;
        QVERIFY(readRtf(start + repeated("x", 1000) + '}', progress, RtfExtent::Document, limits).document);
        const auto failure = failureOf(
            [&] { readRtf(start + repeated("x", 1001) + '}', progress, RtfExtent::Document, limits); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), error::InvalidFileFormat);
        QVERIFY(failure->text().contains(u"1000"));
    }

    void hiddenTextCountsToo()
    {
        RtfLimits limits;
        limits.characters = 1000;
        DocumentProgress progress;
        QVERIFY_THROWS_EXCEPTION(
            RuntimeError,
            readRtf(start + "\\v " + repeated("x", 1001) + '}', progress, RtfExtent::Document, limits));
    }

    // Any start of a document is a document.
    void survivesEveryTruncation()
    {
        const QByteArray whole = start
            + "{\\fonttbl{\\f0\\fcharset128 A;}}{\\colortbl;\\red1;}{\\stylesheet{\\s1\\b "
              "x;}}{\\*\\listtable{\\list{\\listlevel{\\leveltext\\'01"
              "\\'00;}}\\listid1}}{\\*\\listoverridetable{\\listoverride\\listid1\\ls1}}{\\info{\\title "
              "t}}{\\header h}\\pard\\s1\\ls1\\f0 a\\'83\\'5c"
              "\\par\\trowd\\clvmgf\\cellx900\\intbl b\\cell\\row{\\field{\\*\\fldinst HYPERLINK "
              "\"x\"}{\\fldrslt c}}{\\*\\shppict{\\pict\\pngblip"
              "\\bin4 abcd}}{\\shp{\\*\\shpinst{\\shptxt d\\par}}}{\\footnote\\chftn e}\\u8364?{\\v "
              "f}{\\upr{g}{\\*\\ud{h}}}\\sect i}";
        for (qsizetype length = 5; length <= whole.size(); ++length)
            QVERIFY(load(whole.first(length)).document || length < start.size());
    }
};

QTEST_MAIN(TestRtfReaderHostile)
#include "TestRtfReaderHostile.moc"

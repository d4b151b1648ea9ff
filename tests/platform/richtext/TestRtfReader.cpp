#include <QDir>
#include <QTest>
#include <QTextBlock>
#include <QTextList>
#include <QTextTable>

#include "RtfDescription.h"
#include "controls/ListMarker.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfReader.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

// A picture of two by two points.
const QByteArray pngHex
    = "89504e470d0a1a0a0000000d494844520000000200000002080200000"
      "0fdd49a730000001049444154789c63f8cfc0004406100a001def03fdb2a5b1e70000000049454e44ae426082";

QTextBlockFormat paragraphOf(const QByteArray &body)
{
    return loadBody(body).document->begin().blockFormat();
}

QTextTable *tableOf(const LoadedDocument &loaded)
{
    const QList<QTextFrame *> frames = loaded.document->rootFrame()->childFrames();
    return frames.isEmpty() ? nullptr : qobject_cast<QTextTable *>(frames.first());
}

QString cellText(const QTextTable *table, int row, int column)
{
    const QTextTableCell cell = table->cellAt(row, column);
    QTextCursor cursor = cell.firstCursorPosition();
    cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
    return cursor.selectedText().replace(QChar(0x2029), u'/');
}

RtfProloguePointer prologueOf(const LoadedDocument &loaded)
{
    return loaded.document->rootFrame()
        ->frameFormat()
        .property(richtext::Prologue)
        .value<RtfProloguePointer>();
}

QString marker(const QTextBlock &block)
{
    const QTextList *list = block.textList();
    return list ? listMarkerText(list->format(), list->itemNumber(block)) + u' ' : QString();
}

// The number or bullet before each list paragraph, then its text.
QStringList items(const LoadedDocument &loaded)
{
    QStringList shown;
    for (QTextBlock block = loaded.document->begin(); block.isValid(); block = block.next())
        shown.append(marker(block) + block.text());
    return shown;
}

const QByteArray listTables
    = "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'00.;}{"
      "\\levelnumbers\\'01;}\\fi-360"
      "\\li720}{\\listlevel\\levelnfc4\\levelstartat1{\\leveltext\\'04\\'00.\\'01);}{\\levelnumbers\\'01\\'"
      "03;}}\\listid7}"
      "{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\u8226 ?;}{\\levelnumbers;}}\\listid8}"
      "{\\list{\\listlevel\\levelnfc1\\levelstartat5{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
      "\\listid9}}"
      "{\\*\\listoverridetable{\\listoverride\\listid7\\listoverridecount0\\ls1}{"
      "\\listoverride\\listid8\\ls2}"
      "{\\listoverride\\listid9\\ls3}{\\listoverride\\listid4711\\ls4}}";

} // namespace

class TestRtfReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &body, const QString &text) {
            QTest::newRow(name) << body << text;
        };
        row("nothing", "", u""_qs);
        row("one paragraph", "a", u"a"_qs);
        row("last paragraph end opens none", "a\\par", u"a"_qs);
        row("last end and formatting", "a\\par\\pard\\qc ", u"a"_qs);
        row("empty last paragraph", "a\\par\\par", u"a\n"_qs);
        row("only an empty paragraph", "\\par", u""_qs);
        row("escaped line end", "a\\\nb", u"a\nb"_qs);
        row("line", "a\\line b", u"a|b"_qs);
        row("tab", "a\\tab b\tc", u"a\tb\tc"_qs);
        row("page", "a\\page b", u"a\u000Cb"_qs);
        row("symbols", "\\~\\-\\_\\\\\\{\\}", u"\u00A0\u00AD\u2011\\{}"_qs);
        row("quotes and dashes", "\\lquote\\rquote\\ldblquote\\rdblquote\\bullet\\emdash\\endash",
            u"\u2018\u2019\u201C\u201D\u2022\u2014\u2013"_qs);
        row("widths and marks", "\\emspace\\enspace\\qmspace\\zwj\\zwnj\\ltrmark\\rtlmark",
            u"\u2003\u2002\u2005\u200D\u200C\u200E\u200F"_qs);
        row("line ends of the file", "a\r\nb", u"ab"_qs);
        row("unknown word keeps its text", "{\\unknown a}b", u"ab"_qs);
        row("unknown optional group goes", "{\\*\\unknown a{b}}c", u"c"_qs);
        row("western octets", "\\'e9\\'80", u"é€"_qs);
        row("undefined octet", "\\'81", u"\u0081"_qs);
        row("control octets", "a\\'00\\'07\\'09\\'0d\\'0ab", u"a\t|b"_qs);
        row("broken octet", "a\\'4\\'zzb", u"azzb"_qs);
        row("unicode", "\\u8364?x", u"€x"_qs);
        row("negative unicode", "\\u-4000?x", u"\uF060x"_qs);
        row("fallback of two", "\\uc2\\u8364 abx", u"€x"_qs);
        row("fallback of octets", "\\uc2\\u8364\\'80\\'80x", u"€x"_qs);
        row("no fallback", "\\uc0\\u8364 x", u"€x"_qs);
        row("fallback ends at a brace", "{\\uc5\\u8364 a}bc", u"€bc"_qs);
        row("fallback is part of the group", "{\\uc0 }\\u8364?x", u"€x"_qs);
        row("special character as fallback", "\\u8364\\bullet x", u"€x"_qs);
        row("word that is no fallback", "\\u8364\\par x", u"€\nx"_qs);
        row("escaped fallback", "\\u8364\\}x", u"€x"_qs);
        row("surrogate pair", "\\u-10188?\\u-8930?", u"\U0001D11E"_qs);
        row("surrogate pair in two groups", "{\\b\\u-10188?}{\\i\\u-8930?}", u"\U0001D11E"_qs);
        row("lone surrogates", "\\u-10188?a\\u-8930?\\u-10188?", u"\uFFFDa\uFFFD\uFFFD"_qs);
        row("structure characters", "a\\u-560?\\u-559?\\u-4?\\u8233?b", u"a\uFFFD\uFFFD\uFFFD|b"_qs);
        row("unicode alternative", "{\\upr{poor}{\\*\\ud{rich}}}", u"rich"_qs);
        row("deleted text", "a{\\deleted b}{\\revised c}", u"ac"_qs);
        row("hidden text", "a{\\v b}c", u"a#c"_qs);
        row("bookmark", "{\\*\\bkmkstart x}a{\\*\\bkmkend x}", u"#a#"_qs);
        row("bookmark behind the last paragraph", "a\\par{\\*\\bkmkend x}", u"a#"_qs);
        row("binary data", "a\\bin4 }}}}b", u"ab"_qs);
        row("text box",
            "a{\\shp{\\*\\shpinst{\\sp{\\sn x}{\\sv 1}}{\\shptxt\\pard box\\par}}{\\shprslt old}}b",
            u"box\nab"_qs);
        row("old text box", "a{\\*\\do\\dpx1{\\dptxbxtext\\pard box\\par}}b", u"box\nab"_qs);
        row("object", "a{\\object{\\*\\objdata 0102}{\\result shown}}b", u"ashownb"_qs);
        row("object without result", "a{\\object{\\*\\objdata 0102}}b", u"a#b"_qs);
        row("footnote", "a\\chftn{\\footnote\\pard{\\super\\chftn}note\\par}b\\par c", u"a#b\nc\n#note"_qs);
        row("comment", "a{\\*\\atnauthor Ann}\\chatn{\\*\\annotation why}b", u"a#b\n#why"_qs);
        row("footnote with a mark of its own", "a{\\super *}{\\footnote{\\super *} note}b",
            u"a*#b\n* note"_qs);
        row("footnote of several paragraphs", "a\\chftn{\\footnote b\\par c}", u"a#\nb\nc"_qs);
        row("empty footnote", "a\\chftn{\\footnote}b\\chftn{\\footnote c}", u"a#b#\n\nc"_qs);
        row("table in a footnote", "a\\chftn{\\footnote\\trowd\\cellx9\\intbl b\\cell\\row c}d",
            u"a#d\nb\t\nc"_qs);
        row("deleted footnote", "a{\\deleted\\chftn{\\footnote b}}c", u"ac"_qs);
        row("header and information", "{\\header h}{\\info{\\title t}}a", u"a"_qs);
        row("section", "a\\sect b", u"a\nb"_qs);
        row("section behind a paragraph", "a\\par\\sect b", u"a\nb"_qs);
        row("double-byte octets in a western font", "\\'83\\'5c", u"ƒ\\"_qs);
    }

    void text()
    {
        QFETCH(QByteArray, body);
        QTEST(shownText(body), "text");
    }

    void charsets_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &rtf, const QString &text) {
            QTest::newRow(name) << rtf << text;
        };
        const QByteArray japanese
            = "{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset128 Gothic;}{\\f1\\fcharset0 Arial;}}\\f0 ";
        row("pair", japanese + "\\'83\\'5c}", u"ソ"_qs);
        row("pair with an escaped trail", japanese + "\\'83\\\\}", u"ソ"_qs);
        row("pair with a plain trail", japanese + "\\'83A}", u"ア"_qs);
        row("pair over a line end", japanese + "\\'83\r\n\\'5c}", u"ソ"_qs);
        row("raw pair", japanese + "\x8E\xE8}", u"手"_qs);
        row("another font", japanese + "\\'83\\'5c\\f1\\'e9}", u"ソé"_qs);
        row("font of the group", japanese + "{\\f1\\'e9}\\'83\\'5c}", u"éソ"_qs);
        row("default font", "{\\rtf1\\ansi\\deff3{\\fonttbl{\\f3\\fcharset204 A;}}\\'cf}", u"П"_qs);
        row("font without charset", "{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0 A;}}\\f0\\'cf}", u"П"_qs);
        row("font with a code page", "{\\rtf1\\ansi{\\fonttbl{\\f0\\cpg1251 A;}}\\f0\\'cf}", u"П"_qs);
        row("code page of zero", "{\\rtf1\\mac\\ansicpg0\\'8e}", u"é"_qs);
        row("unknown code page", "{\\rtf1\\ansi\\ansicpg4711\\'e9}", u"é"_qs);
        row("mac", "{\\rtf1\\mac\\'8e}", u"é"_qs);
        row("pc", "{\\rtf1\\pc\\'82}", u"é"_qs);
        row("pca", "{\\rtf1\\pca\\'d5}", u"ı"_qs);
        row("utf-8", "{\\rtf1\\ansi\\ansicpg65001 \xC3\xA9}", u"é"_qs);
        row("symbols", "{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset2 Symbol;}}\\f0\\'61\\'b7}", u"\uF061•"_qs);
        row("fonts in an alternative",
            "{\\rtf1\\ansi{\\upr{\\fonttbl{\\f0 x;}}{\\*\\ud{\\fonttbl{\\f0\\fcharset204 y;}}}}\\f0\\'cf}",
            u"П"_qs);
        row("byte order mark", "\xEF\xBB\xBF{\\rtf1 a}", u"a"_qs);
        row("leading blanks", " \r\n{\\rtf1 a}", u"a"_qs);
        row("capitals", "{\\RTF1 a}", u"a"_qs);
        row("no version", "{\\rtf a}", u"a"_qs);
    }

    void charsets()
    {
        QFETCH(QByteArray, rtf);
        QTEST(shownText(*load(rtf).document), "text");
    }

    void runs_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("runs");
        const auto row = [](const char *name, const QByteArray &body, const QString &runs) {
            QTest::newRow(name) << body << runs;
        };
        row("plain", "a", u"a{}"_qs);
        row("bold", "\\b a\\b0 b", u"a{b}b{}"_qs);
        row("group", "{\\b a}b", u"a{b}b{}"_qs);
        row("plain again", "\\b\\i\\fs40\\cf1 a\\plain b", u"a{b i 20 #ff0000}b{}"_qs);
        row("italic and underline", "\\i a\\i0\\ul b\\ulnone c", u"a{i}b{ul}c{}"_qs);
        row("other underlines are single", "\\uldb a\\uldb0\\ulwave b\\ul0 c", u"ab{ul}c{}"_qs);
        row("strike", "\\strike a\\strike0\\striked1 b", u"a{strike}b{strike double}"_qs);
        row("super and sub", "\\super a\\sub b\\nosupersub c", u"a{super}b{sub}c{}"_qs);
        row("raised", "\\up6 a\\up0\\dn4 b", u"a{rise 6}b{rise -4}"_qs);
        row("capitals", "\\caps a\\caps0\\scaps b", u"a{caps}b{scaps}"_qs);
        row("size", "\\fs21 a\\fs0 b\\fs99999999 c", u"a{10.5}b{}c{2160}"_qs);
        row("font", "\\f1 a\\f0 b", u"a{Mono}b{}"_qs);
        row("unknown font", "\\f9 a", u"a{}"_qs);
        row("colour", "\\cf1 a\\cf2 b\\cf0 c\\cf99 d", u"a{#ff0000}b{#0000ff}cd{}"_qs);
        row("background", "\\highlight1 a\\highlight0\\cb2 b\\cb0 c", u"a{on #ff0000}b{on #0000ff}c{}"_qs);
        row("kept words", "\\lang1033 a\\lang1031\\expndtw20 b\\plain c",
            u"a{\\lang1033}b{\\lang1031\\expndtw20}c{}"_qs);
        row("neighbours of one format are one run", "{\\b a}{\\b b}", u"ab{b}"_qs);
    }

    void runs()
    {
        QFETCH(QByteArray, body);
        QTEST(shownRuns(body), "runs");
    }

    void automaticColourIsNotBlack()
    {
        const auto loaded = load("{\\rtf1{\\colortbl\\red0\\green0\\blue0;;}a\\cf0 b\\cf1 c}");
        QVERIFY(!formatOf(*loaded.document, u"a"_qs).hasProperty(QTextFormat::ForegroundBrush));
        QCOMPARE(formatOf(*loaded.document, u"b"_qs).foreground().color(), QColor(Qt::black));
        QVERIFY(!formatOf(*loaded.document, u"c"_qs).hasProperty(QTextFormat::ForegroundBrush));
    }

    void paragraphFormats()
    {
        QCOMPARE(paragraphOf("a").alignment(), Qt::AlignLeft);
        QCOMPARE(paragraphOf("\\qr a").alignment(), Qt::AlignRight);
        QCOMPARE(paragraphOf("\\qc a").alignment(), Qt::AlignHCenter);
        QCOMPARE(paragraphOf("\\qj a").alignment(), Qt::AlignJustify);
        const QTextBlockFormat format
            = paragraphOf("\\li720\\ri300\\fi-360\\sb120\\sa240\\keep\\keepn\\pagebb a");
        QCOMPARE(format.leftMargin(), 48.0);
        QCOMPARE(format.rightMargin(), 20.0);
        QCOMPARE(format.textIndent(), -24.0);
        QCOMPARE(format.topMargin(), 8.0);
        QCOMPARE(format.bottomMargin(), 16.0);
        QVERIFY(format.nonBreakableLines());
        QVERIFY(format.boolProperty(richtext::KeepWithNext));
        QCOMPARE(format.pageBreakPolicy(), QTextFormat::PageBreak_AlwaysBefore);
        QCOMPARE(paragraphOf("\\li99999999 a").leftMargin(), 31680 / 15.0);
        QCOMPARE(paragraphOf("\\li1 a").leftMargin() * 15, 1.0);
        QCOMPARE(paragraphOf("\\li720\\pard a").leftMargin(), 0.0);
    }

    void rightToLeftParagraphs()
    {
        const QTextBlockFormat format = paragraphOf("\\rtlpar\\ql a");
        QCOMPARE(format.layoutDirection(), Qt::RightToLeft);
        QCOMPARE(format.alignment(), Qt::AlignLeft | Qt::AlignAbsolute);
    }

    void lineSpacing()
    {
        const QTextBlockFormat multiple = paragraphOf("\\sl360\\slmult1 a");
        QCOMPARE(multiple.lineHeightType(), int(QTextBlockFormat::ProportionalHeight));
        QCOMPARE(multiple.lineHeight(), 150.0);
        const QTextBlockFormat least = paragraphOf("\\sl300\\slmult0 a");
        QCOMPARE(least.lineHeightType(), int(QTextBlockFormat::MinimumHeight));
        QCOMPARE(least.lineHeight(), 20.0);
        const QTextBlockFormat exact = paragraphOf("\\sl-300 a");
        QCOMPARE(exact.lineHeightType(), int(QTextBlockFormat::FixedHeight));
        QCOMPARE(exact.lineHeight(), 20.0);
    }

    void tabStops()
    {
        const QList<QTextOption::Tab> tabs
            = paragraphOf("\\tx300\\tqr\\tx600\\tqc\\tx900\\tqdec\\tx1200 a").tabPositions();
        QCOMPARE(tabs.size(), 4);
        QCOMPARE(tabs[0].position, 20.0);
        QCOMPARE(tabs[0].type, QTextOption::LeftTab);
        QCOMPARE(tabs[1].type, QTextOption::RightTab);
        QCOMPARE(tabs[2].type, QTextOption::CenterTab);
        QCOMPARE(tabs[3].type, QTextOption::DelimiterTab);
        QByteArray manyTabs;
        for (int i = 1; i <= 100; ++i)
            manyTabs += "\\tx" + QByteArray::number(100 * i);
        QCOMPARE(paragraphOf(manyTabs + " a").tabPositions().size(), 64);
    }

    void tabStopsHaveTheDocumentsDistance()
    {
        QCOMPARE(load("{\\rtf1\\deftab300 a}").document->defaultTextOption().tabStopDistance(), 20.0);
        const RichTextDocument fresh;
        QCOMPARE(load("{\\rtf1\\deftab-300 a}").document->defaultTextOption().tabStopDistance(),
                 fresh.defaultTextOption().tabStopDistance());
    }

    void bordersAndUnshownWordsAreKept()
    {
        QCOMPARE(paragraphOf("\\brdrb\\brdrs\\brdrw10\\outlinelevel1 a").stringProperty(richtext::KeptWords),
                 u"\\brdrb\\brdrs\\brdrw10\\outlinelevel1"_qs);
        QVERIFY(!paragraphOf("\\brdrb\\brdrs\\pard a").hasProperty(richtext::KeptWords));
    }

    void stylesBecomeFormatting()
    {
        const auto loaded
            = load("{\\rtf1{\\fonttbl{\\f0 Serif;}}{\\stylesheet{\\ql Normal;}{\\s1\\qc\\b\\fs40 One;}"
                   "{\\s2\\sbasedon1\\i\\b0 Two;}{\\*\\cs3\\ul Three;}}\\pard\\s1 a\\par\\pard\\plain"
                   "\\s2 b{\\cs3 c}}");
        const QTextBlock first = loaded.document->begin();
        QCOMPARE(first.blockFormat().alignment(), Qt::AlignHCenter);
        QCOMPARE(first.blockFormat().intProperty(richtext::ParagraphStyle), 1);
        QCOMPARE(formatOf(*loaded.document, u"a"_qs).fontPointSize(), 20.0);
        const QTextCharFormat second = formatOf(*loaded.document, u"b"_qs);
        QVERIFY(second.fontItalic());
        QVERIFY(second.fontWeight() != QFont::Bold);
        QCOMPARE(second.fontPointSize(), 20.0);
        const QTextCharFormat third = formatOf(*loaded.document, u"c"_qs);
        QVERIFY(third.fontUnderline());
        QCOMPARE(third.intProperty(richtext::CharacterStyle), 3);
        QVERIFY(prologueOf(loaded)->styleSheet.startsWith("{\\stylesheet{"));
    }

    void aParagraphHasNothingOfTheStyleBelowItsOwn()
    {
        const auto loaded = load("{\\rtf1{\\stylesheet{\\s1\\sa160\\qc One;}{\\s2\\sbasedon1\\sb240 Two;}}"
                                 "\\pard\\s2\\sb240 a\\par\\pard\\s1 b}");
        const QTextBlockFormat first = loaded.document->begin().blockFormat();
        QCOMPARE(first.topMargin(), 16.0);
        QCOMPARE(first.bottomMargin(), 0.0);
        QCOMPARE(first.alignment(), Qt::AlignLeft);
        QCOMPARE(loaded.document->lastBlock().blockFormat().alignment(), Qt::AlignHCenter);
    }

    void tabStopsKeepWhatIsInFrontOfThem()
    {
        const QTextBlockFormat format = paragraphOf("\\tqr\\tldot\\tx600\\tx900\\tlul\\tx1200 a");
        QCOMPARE(format.property(richtext::TabLeaders).toList(), (QVariantList{600, 1, 1200, 4}));
        QCOMPARE(format.tabPositions().size(), 3);
        QCOMPARE(format.tabPositions().first().type, QTextOption::RightTab);
    }

    void drawingsWithoutTextAreKeptWhole()
    {
        const QByteArray line = "{\\shp{\\*\\shpinst\\shpleft1{\\sp{\\sn shapeType}{\\sv 20}}}}";
        const auto drawn = loadBody("a" + line + "b");
        QCOMPARE(shownText(*drawn.document), u"a#b"_qs);
        QTextCursor cursor(drawn.document.get());
        cursor.setPosition(2);
        QCOMPARE(cursor.charFormat().property(richtext::RawRtf).toByteArray(), line);
        const QByteArray picture
            = "{\\shp{\\*\\shpinst{\\sp{\\sn pib}{\\sv {\\pict\\pngblip " + pngHex + "}}}}}";
        const auto shown = loadBody("a" + picture + "b");
        cursor = QTextCursor(shown.document.get());
        cursor.setPosition(2);
        QVERIFY(cursor.charFormat().isImageFormat());
        QCOMPARE(cursor.charFormat().property(richtext::PictureRtf).toByteArray(), picture);
        QCOMPARE(shown.notices, QStringList());
    }

    void directFormattingOverridesStyles()
    {
        const auto loaded = load("{\\rtf1{\\stylesheet{\\s1\\b\\qc One;}}\\s1\\b0\\qr a}");
        QVERIFY(formatOf(*loaded.document, u"a"_qs).fontWeight() != QFont::Bold);
        QCOMPARE(loaded.document->begin().blockFormat().alignment(), Qt::AlignRight);
    }

    void lists_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("shown");
        const auto row = [](const char *name, const QByteArray &body, const QStringList &shown) {
            QTest::newRow(name) << listTables + body << shown;
        };
        row("numbers", "{\\listtext 1.\\tab}\\ls1 a\\par{\\listtext 2.\\tab}b\\par",
            {u"1. a"_qs, u"2. b"_qs});
        row("number before its paragraph's words", "{\\listtext\\pard\\plain 1.\\tab}\\pard\\ls1 a\\par",
            {u"1. a"_qs});
        row("numbers count on over other text", "\\ls1 a\\par\\pard b\\par\\ls1 c",
            {u"1. a"_qs, u"b"_qs, u"2. c"_qs});
        row("levels begin anew", "\\ls1 a\\par\\ilvl1 b\\par c\\par\\ilvl0 d\\par\\ilvl1 e",
            {u"1. a"_qs, u"1.a) b"_qs, u"1.b) c"_qs, u"2. d"_qs, u"2.a) e"_qs});
        row("a list that starts with five", "\\ls3 a\\par b", {u"V. a"_qs, u"VI. b"_qs});
        row("legacy numbers from seven", "{\\*\\pn\\pnlvlbody\\pndec\\pnstart7{\\pntxta .}}a\\par b",
            {u"7. a"_qs, u"8. b"_qs});
        row("a start beyond all lists", "{\\*\\pn\\pnlvlbody\\pndec\\pnstart2147483647{\\pntxta .}}a\\par b",
            {u"32767. a"_qs, u"32768. b"_qs});
        row("undefined list keeps its text", "{\\listtext x)\\tab}\\ls9 a", {u"x)\ta"_qs});
        row("a list of the number zero",
            "{\\*\\listoverridetable{\\listoverride\\listid7\\ls0}}\\ls0 a\\par\\ls0 b",
            {u"1. a"_qs, u"2. b"_qs});
        row("the number zero of no list", "{\\listtext x)\\tab}\\ls0 a", {u"x)\ta"_qs});
        row("list that overrides nothing", "{\\listtext x)\\tab}\\ls4 a", {u"x)\ta"_qs});
        row("legacy numbers",
            "{\\pntext 1)\\tab}{\\*\\pn\\pnlvlbody\\pndec{\\pntxta )}}a\\par{\\pntext 2)\\tab}b",
            {u"1) a"_qs, u"2) b"_qs});
        row("legacy number that only continues", "{\\pntext x}{\\*\\pn\\pnlvlcont}a", {u"xa"_qs});
        row("list text that no list claims", "{\\pntext 1)\\tab}a", {u"1)\ta"_qs});
    }

    void lists()
    {
        QFETCH(QByteArray, body);
        QTEST(items(loadBody(body)), "shown");
    }

    void listFormats()
    {
        const auto loaded = loadBody(listTables + "\\pard\\fi-360\\li720\\ls2\\ilvl0 a\\par\\pard\\ls3 b");
        const QTextBlock bullet = loaded.document->begin();
        QCOMPARE(bullet.textList()->format().style(), QTextListFormat::ListDisc);
        QCOMPARE(bullet.textList()->format().intProperty(richtext::ListOverride), 2);
        QCOMPARE(bullet.textList()->format().indent(), 0);
        QCOMPARE(bullet.blockFormat().leftMargin(), 48.0);
        QCOMPARE(bullet.blockFormat().textIndent(), 0.0);
        QCOMPARE(bullet.blockFormat().intProperty(richtext::ListFirstIndent), -360);
        QCOMPARE(bullet.next().textList()->format().intProperty(richtext::ListStart), 5);
        QVERIFY(prologueOf(loaded)->listTable.startsWith("{\\*\\listtable"));
        QVERIFY(prologueOf(loaded)->listOverrideTable.endsWith("}}"));
        QCOMPARE(loaded.notices, QStringList());
    }

    void marksOfNotesShowTheirNumbers()
    {
        const auto loaded
            = loadBody("a{\\super\\chftn}{\\footnote\\chftn b}c{\\super\\chftn{\\footnote\\ftnalt\\chftn d}}"
                       "e{\\*\\atnid An}{\\*\\atnauthor Ann}\\chatn{\\*\\annotation{\\*\\atndate 1}f}"
                       "g\\chftn{\\footnote h}");
        QStringList marks;
        for (QTextBlock block = loaded.document->begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it) {
                const QTextCharFormat format = it.fragment().charFormat();
                if (format.objectType() == richtext::NoteMark)
                    marks += QStringLiteral("%1 %2 %3")
                                 .arg(format.intProperty(richtext::NoteId))
                                 .arg(format.stringProperty(richtext::NoteNumber),
                                      QString::fromLatin1(
                                          format.property(richtext::NoteOpening).toByteArray()));
            }
        }
        QCOMPARE(marks,
                 (QStringList{u"1 1 {\\footnote"_qs, u"2 i {\\footnote\\ftnalt"_qs,
                              u"3 [1] {\\*\\annotation{\\*\\atndate 1}"_qs, u"4 2 {\\footnote"_qs, u"0 1 "_qs,
                              u"0 i "_qs, u"0 [1] Ann:  "_qs}));
        QCOMPARE(formatOf(*loaded.document, u"b"_qs).objectType(), 0);
        QCOMPARE(loaded.document->lastBlock().blockFormat().intProperty(richtext::NoteId), 4);
    }

    void tables_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, const QByteArray &body, const QString &text) {
            QTest::newRow(name) << body << text;
        };
        const QByteArray two = "\\trowd\\cellx1000\\cellx2000\\pard\\intbl ";
        row("one row", two + "a\\cell b\\cell\\row\\pard c", u"[a[b]c"_qs);
        row("behind text", "x\\par" + two + "a\\cell b\\cell\\row\\pard c", u"x[a[b]c"_qs);
        row("behind an empty paragraph", "x\\par\\par" + two + "a\\cell b\\cell\\row\\pard c",
            u"x\n\n[a[b]c"_qs);
        row("at the end", two + "a\\cell b\\cell\\row", u"[a[b]"_qs);
        row("two tables with a paragraph between",
            two + "a\\cell b\\cell\\row\\pard\\par" + two + "c\\cell d\\cell\\row", u"[a[b]\n[c[d]"_qs);
        row("paragraphs in a cell", two + "a\\par b\\cell c\\cell\\row", u"[a\nb[c]"_qs);
        row("definition behind the cells", "\\pard\\intbl a\\cell b\\cell\\trowd\\cellx1000\\cellx2000\\row",
            u"[a[b]"_qs);
        row("no definition", "\\pard\\intbl a\\cell b\\cell\\row", u"[a[b]"_qs);
        row("definition of the row before", two + "a\\cell b\\cell\\row\\intbl c\\cell d\\cell\\row",
            u"[a[b[c[d]"_qs);
        row("more cells than defined", two + "a\\cell b\\cell c\\cell\\row", u"[a[b[c]"_qs);
        row("fewer cells than defined", two + "a\\cell\\row", u"[a[]"_qs);
        row("cells without \\intbl", "\\trowd\\cellx1000\\pard a\\cell\\row", u"[a]"_qs);
        row("\\intbl without cells", "\\pard\\intbl a\\par b", u"a\nb"_qs);
        row("row without end", two + "a\\cell b", u"[a[b]"_qs);
        row("horizontal merge",
            "\\trowd\\clmgf\\cellx1000\\clmrg\\cellx2000\\cellx3000\\pard\\intbl a\\cell\\cell c\\cell\\row",
            u"[a[c]"_qs);
        row("nested",
            "\\trowd\\cellx9000\\pard\\intbl a\\par\\pard\\intbl\\itap2 b\\nestcell "
            "c\\nestcell{\\*\\nesttableprops"
            "\\trowd\\cellx1000\\cellx2000\\nestrow}{\\nonesttables\\par}\\pard\\intbl d\\cell\\row",
            u"[a[b[c]d]"_qs);
    }

    void tables()
    {
        QFETCH(QByteArray, body);
        QTEST(shownText(body), "text");
    }

    void tableFormat()
    {
        const auto loaded
            = loadBody("\\trowd\\trhdr\\trleft150\\clvertalc\\clcbpat1\\clbrdrt\\brdrs\\cellx1650\\cellx4650"
                       "\\pard\\intbl a\\cell b\\cell\\row");
        const QTextTable *table = tableOf(loaded);
        const QTextTableFormat format = table->format();
        QCOMPARE(format.leftMargin(), 10.0);
        QCOMPARE(format.headerRowCount(), 1);
        QCOMPARE(format.border(), 1.0);
        const QList<QTextLength> widths = format.columnWidthConstraints();
        QCOMPARE(widths.size(), 2);
        QCOMPARE(widths[0].rawValue(), 100.0);
        QCOMPARE(widths[1].rawValue(), 200.0);
        const QTextCharFormat cell = table->cellAt(0, 0).format();
        QCOMPARE(cell.background().color(), QColor(Qt::red));
        QCOMPARE(cell.verticalAlignment(), QTextCharFormat::AlignMiddle);
        QCOMPARE(
            format.property(richtext::RowDefinitions).toList(),
            QVariantList{QByteArray(
                "\\trowd\\trhdr\\trleft150\\clvertalc\\clcbpat1\\clbrdrt\\brdrs\\cellx1650\\cellx4650")});
    }

    void verticalMerge()
    {
        const auto loaded
            = loadBody("\\trowd\\clvmgf\\cellx1000\\cellx2000\\pard\\intbl a\\cell b\\cell\\row"
                       "\\trowd\\clvmrg\\cellx1000\\cellx2000\\pard\\intbl lost?\\cell c\\cell\\row");
        const QTextTable *table = tableOf(loaded);
        QCOMPARE(table->rows(), 2);
        QCOMPARE(table->cellAt(0, 0).rowSpan(), 2);
        QCOMPARE(cellText(table, 0, 0), u"a/lost?"_qs);
        QCOMPARE(cellText(table, 1, 1), u"c"_qs);
    }

    void rowsOfDifferentCellsShareOneGrid()
    {
        const auto loaded
            = loadBody("\\trowd\\cellx1000\\cellx2000\\cellx3000\\pard\\intbl a\\cell b\\cell c\\cell\\row"
                       "\\trowd\\cellx2010\\cellx3000\\pard\\intbl d\\cell e\\cell\\row");
        const QTextTable *table = tableOf(loaded);
        QCOMPARE(table->columns(), 3);
        QCOMPARE(table->cellAt(1, 0).columnSpan(), 2);
        QCOMPARE(cellText(table, 1, 0), u"d"_qs);
        QCOMPARE(cellText(table, 1, 2), u"e"_qs);
    }

    void deepTablesBecomeText()
    {
        QByteArray body;
        for (int depth = 1; depth <= 12; ++depth)
            body += "\\pard\\intbl\\itap" + QByteArray::number(depth) + " d" + QByteArray::number(depth)
                + "\\par ";
        for (int depth = 12; depth >= 2; --depth)
            body += "\\pard\\intbl\\itap" + QByteArray::number(depth)
                + " x\\nestcell{\\*\\nesttableprops\\trowd\\cellx1000\\nestrow}";
        const auto loaded = loadBody("\\trowd\\cellx9000 " + body + "\\pard\\intbl y\\cell\\row");
        const QString text = shownText(*loaded.document);
        for (int depth = 1; depth <= 12; ++depth)
            QVERIFY(text.contains(u"d%1"_qs.arg(depth)));
        QCOMPARE(text.count(u'x'), 11);
        QCOMPARE(loaded.notices,
                 QStringList{u"The tables are too large or too deep; some are shown as text with tabs."_qs});
    }

    void links_data()
    {
        QTest::addColumn<QByteArray>("instruction");
        QTest::addColumn<QString>("target");
        const auto row = [](const char *name, const QByteArray &instruction, const QString &target) {
            QTest::newRow(name) << instruction << target;
        };
        row("http", "HYPERLINK \"http://a.example/b\"", u"http://a.example/b"_qs);
        row("formatted", "{\\b HYPERLINK} {\"https://a.example\"}", u"https://a.example"_qs);
        row("without quotes", " hyperlink mailto:a@b.example ", u"mailto:a@b.example"_qs);
        row("place", "HYPERLINK \\\\l \"there\"", u"#there"_qs);
        row("address and place", "HYPERLINK \"http://a.example\" \\\\l \"there\"",
            u"http://a.example#there"_qs);
        row("with a tip", "HYPERLINK \\\\o \"tip\" \"http://a.example\"", u"http://a.example"_qs);
        row("script", "HYPERLINK \"javascript:alert(1)\"", QString());
        row("file", "HYPERLINK \"file:///etc/passwd\"", QString());
        row("another field", "PAGE", QString());
    }

    void links()
    {
        QFETCH(QByteArray, instruction);
        QFETCH(QString, target);
        const QByteArray group = "{\\*\\fldinst " + instruction + '}';
        const auto loaded = loadBody("{\\field" + group + "{\\fldrslt text}}behind");
        const QTextCharFormat format = formatOf(*loaded.document, u"text"_qs);
        QCOMPARE(format.isAnchor(), !target.isEmpty());
        QCOMPARE(format.anchorHref(), target);
        QCOMPARE(format.property(richtext::FieldInstruction).toByteArray(), group);
        QVERIFY(!formatOf(*loaded.document, u"behind"_qs).hasProperty(richtext::FieldId));
    }

    void fieldsWithinFields()
    {
        const auto loaded = loadBody(
            "{\\field{\\*\\fldinst TOC}{\\fldrslt out{\\field{\\*\\fldinst PAGEREF}{\\fldrslt in}}}}");
        const QTextCharFormat inner = formatOf(*loaded.document, u"in"_qs);
        QCOMPARE(inner.property(richtext::FieldInstruction).toByteArray(),
                 QByteArray("{\\*\\fldinst PAGEREF}"));
        const int outer = formatOf(*loaded.document, u"out"_qs).intProperty(richtext::FieldId);
        QCOMPARE(inner.property(richtext::OuterFields).toList(),
                 (QVariantList{outer, QByteArray("{\\*\\fldinst TOC}")}));
    }

    void fieldWithoutResultIsKept()
    {
        const QByteArray field = "{\\field{\\*\\fldinst PAGE}{\\fldrslt }}";
        const auto loaded = loadBody("a" + field);
        const QTextCharFormat format = formatOf(*loaded.document, QChar(QChar::ObjectReplacementCharacter));
        QCOMPARE(format.objectType(), int(richtext::RawObject));
        QCOMPARE(format.property(richtext::RawRtf).toByteArray(), field);
    }

    void symbolFieldShowsItsCharacter()
    {
        const auto loaded = loadBody("{\\field{\\*\\fldinst SYMBOL 100 \\\\f \"Mono\"}{\\fldrslt}}");
        QCOMPARE(shownText(*loaded.document), u"\uF064"_qs);
        QCOMPARE(formatOf(*loaded.document, u"\uF064"_qs).fontFamilies().toStringList(),
                 QStringList{u"Mono"_qs});
    }

    void pictures()
    {
        const QByteArray group = "{\\pict\\pngblip\\picwgoal300\\pichgoal600\\picscalex200 " + pngHex + '}';
        const auto loaded
            = loadBody("a{\\*\\shppict" + group + "}{\\nonshppict{\\pict\\wmetafile8 00}}b" + group);
        QCOMPARE(shownText(*loaded.document), u"a#b#"_qs);
        const QTextImageFormat image
            = formatOf(*loaded.document, QChar(QChar::ObjectReplacementCharacter)).toImageFormat();
        QCOMPARE(image.width(), 40.0);
        QCOMPARE(image.height(), 40.0);
        QCOMPARE(image.property(richtext::PictureRtf).toByteArray(), "{\\*\\shppict" + group + '}');
        const DocumentPicture *picture = loaded.document->picture(image.name());
        QVERIFY(picture);
        QCOMPARE(picture->data, QByteArray::fromHex(pngHex));
        QVERIFY(loaded.notices.isEmpty());
    }

    void pictureKinds_data()
    {
        QTest::addColumn<QByteArray>("words");
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<QSizeF>("goal");
        QTest::newRow("png of its own size")
            << "\\pngblip " + pngHex << QByteArray("\x89PNG") << QSizeF(30, 30);
        QTest::newRow("png in binary")
            << "\\pngblip\\bin" + QByteArray::number(pngHex.size() / 2) + ' ' + QByteArray::fromHex(pngHex)
            << QByteArray("\x89PNG") << QSizeF(30, 30);
        QTest::newRow("png without a kind") << ' ' + pngHex << QByteArray("\x89PNG") << QSizeF(30, 30);
        QTest::newRow("jpeg") << QByteArray("\\jpegblip\\picw4\\pich2 ffd8ff") << QByteArray("\xFF\xD8\xFF")
                              << QSizeF(60, 30);
        QTest::newRow("bitmap") << "\\dibitmap0\\picw1\\pich1 28000000010000000100000001001800"
                + QByteArray(48, '0') + "ff000000"
                                << QByteArray("BM") << QSizeF(15, 15);
        QTest::newRow("broken bitmap")
            << QByteArray("\\dibitmap0 ffffffff") << QByteArray() << QSizeF(720, 720);
        QTest::newRow("metafile") << QByteArray("\\wmetafile8\\picw2540\\pich1270 00") << QByteArray()
                                  << QSizeF(1440, 720);
        QTest::newRow("absurd size") << QByteArray("\\emfblip\\picwgoal-5\\pichgoal2000000000\\picscaley0 00")
                                     << QByteArray() << QSizeF(720, 31680 / 1.0);
        QTest::newRow("nothing") << QByteArray() << QByteArray() << QSizeF(720, 720);
    }

    void pictureKinds()
    {
        QFETCH(QByteArray, words);
        QFETCH(QByteArray, start);
        QFETCH(QSizeF, goal);
        const auto loaded = loadBody("{\\pict" + words + '}');
        const QTextImageFormat image
            = formatOf(*loaded.document, QChar(QChar::ObjectReplacementCharacter)).toImageFormat();
        const DocumentPicture *picture = loaded.document->picture(image.name());
        QVERIFY(picture);
        QVERIFY(picture->data.startsWith(start));
        QCOMPARE(picture->data.isEmpty(), start.isEmpty());
        QCOMPARE(picture->goal, goal);
        QCOMPARE(loaded.notices.isEmpty(), !start.isEmpty());
    }

    void objectShownByItsPictureIsKept()
    {
        const QByteArray object
            = "{\\object\\objemb{\\*\\objdata 00}{\\result{\\pict\\pngblip " + pngHex + "}}}";
        const auto loaded = loadBody("a" + object);
        const QTextCharFormat format = formatOf(*loaded.document, QChar(QChar::ObjectReplacementCharacter));
        QCOMPARE(format.property(richtext::PictureRtf).toByteArray(), object);
        QVERIFY(loaded.notices.isEmpty());
    }

    void shapePictureIsShown()
    {
        const QByteArray pict = "{\\pict\\pngblip " + pngHex + '}';
        const auto loaded = loadBody("a{\\shp{\\*\\shpinst{\\sp{\\sn fillBlip}{\\sv " + pict
                                     + "}}{\\sp{\\sn pib}{\\sv " + pict + "}}}}b");
        QCOMPARE(shownText(*loaded.document), u"a#b"_qs);
    }

    void keptFragments()
    {
        const auto fragment = [](const QByteArray &body) {
            const auto loaded = loadBody(body);
            return formatOf(*loaded.document, QChar(QChar::ObjectReplacementCharacter))
                .property(richtext::RawRtf)
                .toByteArray();
        };
        QCOMPARE(fragment("{\\*\\bkmkstart here}"), QByteArray("{\\*\\bkmkstart here}"));
        QCOMPARE(fragment("{\\xe{\\v word}}"), QByteArray("{\\xe{\\v word}}"));
        QCOMPARE(fragment("{\\v\\b a\\u8364?\\\\}x"), QByteArray("{\\v\\uc1\\f0\\fs24\\b a\\u8364?\\\\}"));
        // A group whose data is shorter than it says would swallow what follows it.
        QCOMPARE(fragment("{\\*\\bkmkstart \\bin-7 a}"), QByteArray());
    }

    void sections()
    {
        const auto loaded = loadBody("a\\sect\\sectd\\cols2{\\header h}b\\par");
        QCOMPARE(loaded.document->begin().blockFormat().property(richtext::SectionEnd).toByteArray(),
                 QByteArray("\\sect\\sectd\\cols2{\\header h}"));
        QVERIFY(!loaded.document->lastBlock().blockFormat().hasProperty(richtext::SectionEnd));
    }

    void prologue()
    {
        const auto loaded
            = load("{\\rtf1\\ansi\\ansicpg1250\\deff1\\deflang1033{\\fonttbl{\\f1\\fswiss\\fcharset238{\\*"
                   "\\panose 00}Ari"
                   "al{\\*\\falt X};}{\\f2 B\\'e9;}}{\\colortbl;\\red1\\green2\\blue300;}{\\*\\generator "
                   "G;}{\\info{\\title T}}"
                   "{\\*\\template http://evil.example/x}\\paperw11906\\margl1000\\viewkind4{\\header h\\par}"
                   "{\\footer }\\sectd\\sbknone\\pard\\plain a{\\*\\late x}}");
        const RtfProloguePointer kept = prologueOf(loaded);
        QCOMPARE(kept->header, QByteArray("\\ansi\\ansicpg1250\\deff1\\deflang1033"));
        QCOMPARE(kept->fonts.size(), 2);
        QCOMPARE(kept->fonts[0].index, 1);
        QCOMPARE(kept->fonts[0].charset, 238);
        QCOMPARE(kept->fonts[0].name, u"Arial"_qs);
        QCOMPARE(kept->fonts[0].raw,
                 QByteArray("\\f1\\fswiss\\fcharset238{\\*\\panose 00}Arial{\\*\\falt X};"));
        QCOMPARE(kept->fonts[1].name, u"Bé"_qs);
        QCOMPARE(kept->colours, (QList<QColor>{QColor(), QColor(1, 2, 255)}));
        QCOMPARE(kept->otherGroups, (QList<QByteArray>{"{\\*\\generator G;}", "{\\info{\\title T}}"}));
        QCOMPARE(kept->pageSetup, QByteArray("\\paperw11906\\margl1000\\viewkind4\\sectd\\sbknone"));
        QCOMPARE(kept->headersAndFooters, (QList<QByteArray>{"{\\header h\\par}", "{\\footer }"}));
        QCOMPARE(loaded.notices, QStringList{u"1 header is kept but not shown."_qs});
    }

    void flatFontTable()
    {
        const auto loaded = load("{\\rtf1{\\fonttbl\\f0\\froman One;\\f1 Two;}\\f1 a}");
        QCOMPARE(formatOf(*loaded.document, u"a"_qs).fontFamilies().toStringList(), QStringList{u"Two"_qs});
        QCOMPARE(prologueOf(loaded)->fonts[0].raw, QByteArray("\\f0\\froman One;"));
    }

    void notices_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QStringList>("notices");
        const auto row = [](const char *name, const QByteArray &body, const QString &notice) {
            QTest::newRow(name) << body << QStringList{notice};
        };
        const QByteArray shape = "{\\shp{\\*\\shpinst{\\shptxt x\\par}}}";
        QTest::newRow("none") << QByteArray("a") << QStringList();
        row("one drawing", shape, u"1 drawing is shown as plain text; saving will not keep it."_qs);
        row("two drawings", shape + shape,
            u"2 drawings are shown as plain text; saving will not keep them."_qs);
        row("empty drawing", "{\\shp{\\*\\shpinst}}", u"1 drawing is kept but not shown."_qs);
        row("object as text", "{\\object{\\result x}}",
            u"1 embedded object is shown as plain text; saving will not keep it."_qs);
        row("footnotes", "{\\footnote a}{\\footnote b}",
            u"2 footnotes are shown at the end; saving keeps them as footnotes."_qs);
        row("hidden text", "{\\v a}", u"Hidden text is kept but not shown."_qs);
        row("deleted text", "{\\deleted a}",
            u"Text marked as deleted is not shown; saving will not keep it."_qs);
        row("metafile", "{\\pict\\wmetafile8 00}", u"1 picture is shown as a frame; saving keeps it."_qs);
        row("footer", "{\\footer f}a", u"1 footer is kept but not shown."_qs);
        row("tail", "a} tail {", u"The file goes on behind the end of its text; that part is left out."_qs);
    }

    void notices()
    {
        QFETCH(QByteArray, body);
        QTEST(loadBody(body).notices, "notices");
    }

    void blankTailIsNoNews() { QVERIFY(load(QByteArray("{\\rtf1 a}\r\n\0 \x1A", 15)).notices.isEmpty()); }

    void refusesWhatIsNotRtf_data()
    {
        QTest::addColumn<QByteArray>("octets");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("text") << QByteArray("hello");
        QTest::newRow("brace") << QByteArray("{hello}");
        QTest::newRow("no brace") << QByteArray("\\rtf1 hello}");
        QTest::newRow("utf-16") << QByteArray("{\0\\\0r\0t\0f\0", 10);
    }

    void refusesWhatIsNotRtf()
    {
        QFETCH(QByteArray, octets);
        QVERIFY(!looksLikeRtf(octets));
        QCOMPARE(test::numberOf([&] { load(octets); }), error::InvalidFileFormat);
    }

    void reportsProgressAndIsCancelled()
    {
        DocumentProgress progress;
        const QByteArray rtf = "{\\rtf1 " + QByteArray("a\\par ").repeated(1000) + '}';
        QVERIFY(readRtf(rtf, progress).document);
        QVERIFY(progress.total.load() >= rtf.size());
        QCOMPARE(progress.done.load(), progress.total.load());
        progress.cancelled = true;
        QVERIFY(!readRtf(rtf, progress).document);
    }

    void theDocumentIsUntouched()
    {
        const auto loaded = loadBody("a\\par b");
        QVERIFY(!loaded.document->isModified());
        QVERIFY(loaded.document->isUndoRedoEnabled());
        QVERIFY(!loaded.document->isUndoAvailable());
        QCOMPARE(loaded.kind, LoadedDocument::Kind::RichText);
    }

    // Documents that other programs wrote, when they are at hand.
    void foreignDocuments()
    {
        const QString shared = qEnvironmentVariable(
            "VANDREL_SHARED", qEnvironmentVariable("VANDREL_SOURCE_DIR") + u"/../shared"_qs);
        const QDir folder(shared + u"/data/rtf"_qs);
        const QFileInfoList files = folder.entryInfoList({u"*.rtf"_qs}, QDir::Files, QDir::Name);
        if (files.isEmpty())
            QSKIP("no documents of other programs here");
        for (const QFileInfo &entry : files) {
            QFile file(entry.filePath());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray octets = file.readAll();
            if (!looksLikeRtf(octets))
                continue;
            const auto loaded = load(octets);
            QVERIFY2(loaded.document, qPrintable(entry.fileName()));
            QVERIFY2(!shownText(*loaded.document).trimmed().isEmpty(), qPrintable(entry.fileName()));
        }
    }
};

QTEST_MAIN(TestRtfReader)
#include "TestRtfReader.moc"

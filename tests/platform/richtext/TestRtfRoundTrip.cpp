#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextList>
#include <QTextTable>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfReader.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWriter.h"
#include "runtime/RuntimeError.h"
#include "tests/support/DocumentDump.h"

using namespace vandrel;

namespace {

std::unique_ptr<RichTextDocument> read(const QByteArray &rtf, RtfExtent extent = RtfExtent::Document)
{
    DocumentProgress progress;
    return readRtf(rtf, progress, extent).document;
}

QByteArray written(const QTextDocument &document)
{
    QByteArray rtf;
    QBuffer buffer(&rtf);
    buffer.open(QIODevice::WriteOnly);
    writeRtf(document, buffer, [] {});
    return rtf;
}

// What a document keeps as octets: pictures and fragments in their order.
QList<QByteArray> keptOctets(const QTextDocument &document)
{
    QList<QByteArray> kept;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            for (const int property : {int(richtext::RawRtf), int(richtext::PictureRtf)}) {
                if (format.hasProperty(property))
                    kept += format.property(property).toByteArray();
            }
        }
    }
    return kept;
}

bool isSevenBitOutsideOf(QByteArray rtf, const QList<QByteArray> &kept)
{
    for (const QByteArray &octets : kept)
        rtf.replace(octets, QByteArray());
    return std::all_of(rtf.begin(), rtf.end(), [](char octet) { return octet >= 0; });
}

// Loads, saves, loads, saves: the documents are equal, and so are the files.
void verifyRoundTrip(const QByteArray &original)
{
    const auto first = read(original);
    const QByteArray saved = written(*first);
    const auto second = read(saved);
    const QString difference = firstDifference(dumpOf(*first), dumpOf(*second));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QString octets = firstDifference(QString::fromLatin1(saved), QString::fromLatin1(written(*second)));
    QVERIFY2(octets.isEmpty(), qPrintable(octets));
    QCOMPARE(keptOctets(*second), keptOctets(*first));
    for (const QByteArray &kept : keptOctets(*first))
        QVERIFY(saved.contains(kept));
}

// The same for a document that was not loaded. The reader states every font and size, so that the document
// itself is compared from the first load on.
void verifyRoundTrip(const QTextDocument &document)
{
    const QByteArray saved = written(document);
    QVERIFY(isSevenBitOutsideOf(saved, {}));
    const auto loaded = read(saved);
    QCOMPARE(loaded->toRawText(), document.toRawText());
    const QString octets = firstDifference(QString::fromLatin1(saved), QString::fromLatin1(written(*loaded)));
    QVERIFY2(octets.isEmpty(), qPrintable(octets));
    verifyRoundTrip(saved);
}

QString sharedFolder()
{
    const QString named = qEnvironmentVariable("VANDREL_SHARED");
    return named.isEmpty() ? qEnvironmentVariable("VANDREL_SOURCE_DIR") + QStringLiteral("/../shared")
                           : named;
}

QStringList sharedFiles()
{
    const QDir folder(sharedFolder() + QStringLiteral("/data/rtf"));
    QStringList files;
    for (const QString &name : folder.entryList({QStringLiteral("*.rtf")}, QDir::Files))
        files += folder.filePath(name);
    return files;
}

QByteArray rtf(const QByteArray &body)
{
    return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
           "{\\f1\\fswiss\\fcharset0 Arial;}{\\f2\\ftech\\fcharset2 Symbol;}}"
           "{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}"
           "{\\stylesheet{\\s0\\fs24 Normal;}"
           "{\\s1\\sbasedon0\\qc\\sb240\\tx400\\brdrb\\brdrs\\b\\fs32\\cf1\\lang1031 heading 1;}"
           "{\\*\\cs2\\i\\ul\\lang1036 emphasis;}}"
           "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat3{\\leveltext\\'02\\'00.;}"
           "{\\levelnumbers\\'01;}\\fi-360\\li720}{\\listlevel\\levelnfc23{\\leveltext\\'01\\u8226 ?;}"
           "{\\levelnumbers;}\\fi-360\\li1440}\\listid7}}"
           "{\\*\\listoverridetable{\\listoverride\\listid7\\listoverridecount0\\ls1}}"
           "{\\info{\\title T\\'e4st}}\\paperw11906\\margl1134{\\header\\pard top\\par}"
        + body + "}";
}

} // namespace

class TestRtfRoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLoadedDocumentStaysItself_data();
    void aLoadedDocumentStaysItself();
    void aRealFileStaysItself_data();
    void aRealFileStaysItself();
    void everyTypedCharacterSurvives();
    void aDocumentMadeHereStaysItself();
    void aDamagedFileSettlesAfterOneSave_data();
    void aDamagedFileSettlesAfterOneSave();
    void savingAgainAndAgainAddsNothing();
    void aPartReadsAsThePartItWas();
};

void TestRtfRoundTrip::aLoadedDocumentStaysItself_data()
{
    QTest::addColumn<QByteArray>("body");
    const auto row = [](const char *name, const QByteArray &body) { QTest::newRow(name) << body; };
    row("nothing", "");
    row("one paragraph", "\\pard abc\\par");
    row("no end of the last paragraph", "\\pard abc");
    row("empty paragraphs", "\\pard\\par\\par abc\\par\\par\\par");
    row("characters",
        "\\pard {\\b bold}{\\i italic}{\\ul under}{\\strike struck}{\\striked1 twice}{\\super up}"
        "{\\sub down}{\\up6 raised}{\\dn8 lowered}{\\caps caps}{\\scaps small}\\par");
    row("fonts and sizes", "\\pard {\\f1 Arial}{\\fs17 small}{\\f1\\fs96 big}\\par");
    row("a symbol font", "\\pard {\\f2 \\'b7\\'61}\\par");
    row("colours", "\\pard {\\cf1 red}{\\highlight2 blue}{\\cb1 behind}\\par");
    row("a format of the paragraph's end", "\\pard abc{\\fs60\\par}\\pard{\\b\\par}");
    row("paragraphs",
        "\\pard\\qc a\\par\\pard\\qr b\\par\\pard\\qj c\\par\\pard\\li720\\ri360\\fi-360 d\\par"
        "\\pard\\sb120\\sa60\\sl360\\slmult1 e\\par\\pard\\sl-400 f\\par\\pard\\sl400 g\\par"
        "\\pard\\keep\\keepn\\pagebb h\\par\\pard\\tx720\\tqr\\tx5000 i\\tab j\\par\\pard\\cbpat2 k\\par");
    row("tab stops with leaders", "\\pard\\tldot\\tx720\\tqr\\tlhyph\\tx5000\\tx6000 a\\tab b\\par");
    row("styles that only some words repeat",
        "\\pard\\plain\\s1\\qc a\\par\\pard\\plain\\s1\\sb240 b\\par\\pard\\plain\\s1\\widctlpar c\\par");
    row("revisions", "\\pard a{\\revised\\revauth1\\revdttm1 b}\\par");
    row("right to left", "\\pard\\rtlpar\\qr {\\rtlch \\u1575?\\u1604?}\\par\\pard\\rtlpar\\ql x\\par");
    row("odd twips", "\\pard\\li1\\ri7\\fi-13\\sb1\\sa3\\tx1001 a\\par");
    row("paragraph borders", "\\pard\\brdrt\\brdrs\\brdrw10\\brsp20 a\\par\\pard\\box\\brdrdb b\\par");
    row("words nobody shows", "\\pard {\\lang1031\\expndtw20\\kerning28 a}\\par\\pard\\outlinelevel1 b\\par");
    row("styles",
        "\\pard\\plain\\s1\\qc\\sb240\\tx400\\brdrb\\brdrs\\b\\fs32\\cf1\\lang1031 head\\par"
        "\\pard\\plain\\s1\\ql\\b0 other {\\cs2\\i\\ul emph} {\\cs2\\i0 not}\\par\\pard\\plain body\\par");
    row("a style without direct words", "\\pard\\plain\\s1 head\\par\\pard\\plain {\\cs2 emph}\\par");
    row("special characters",
        "\\pard a\\~b\\-c\\_d\\line e\\page f\\tab g\\emdash\\bullet\\ldblquote\\zwj\\par");
    row("Unicode", "\\pard \\u252?\\u8364?\\u-10179?\\u-8704?\\uc2\\u960  pi\\par");
    row("a list",
        "\\pard\\ls1\\ilvl0\\fi-360\\li720 {\\listtext 3.\\tab}a\\par\\ilvl1\\li1440 b\\par b2\\par"
        "\\ilvl0\\li720 c\\par\\pard between\\par\\pard\\ls1\\fi-360\\li720 d\\par");
    row("a list of the number zero",
        "{\\*\\listoverridetable{\\listoverride\\listid7\\ls0}}\\pard\\ls0 a\\par\\pard\\ls0\\ilvl1 b\\par");
    row("a list of the old kind",
        "\\pard{\\*\\pn\\pnlvlbody\\pndec\\pnstart1{\\pntxta )}}\\fi-360\\li360 a\\par b\\par"
        "\\pard between\\par\\pard{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7}}\\fi-360\\li360 c\\par");
    row("a list of the old kind without an indent", "\\pard{\\*\\pn\\pnlvlbody\\pndec} a\\par");
    row("links",
        "\\pard see {\\field{\\*\\fldinst{HYPERLINK \"http://example.org/\"}}{\\fldrslt{\\ul\\cf2 this}}} "
        "and "
        "{\\field{\\*\\fldinst HYPERLINK \\\\l \"place\"}{\\fldrslt that}}.\\par");
    row("fields",
        "\\pard {\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}{\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}"
        "{\\field{\\*\\fldinst TC x}}\\par");
    row("a field of several paragraphs",
        "\\pard\\qr {\\field{\\*\\fldinst TOC}{\\fldrslt one\\par\\pard two "
        "{\\field{\\*\\fldinst PAGEREF a}{\\fldrslt 2}}\\par three}} rest\\par");
    row("bookmarks", "\\pard {\\*\\bkmkstart a}x{\\*\\bkmkend a}{\\*\\bkmkstart b}{\\*\\bkmkend b}\\par");
    row("hidden text", "\\pard a{\\v hidden \\u252? {\\b bold}}b\\par{\\v all hidden\\par}c\\par");
    row("a picture",
        "\\pard {\\pict\\pngblip\\picw1\\pich1\\picwgoal300\\pichgoal300\n89504e470d0a1a0a0000000d49484452"
        "00000001000000010802000000907753de0000000c49444154789c63f8cfc000000301010018dd8db0000000"
        "0049454e44ae426082}{\\b b}\\par");
    row("a metafile",
        "\\pard {\\pict\\wmetafile8\\picw10\\pich20\\picwgoal300\\pichgoal600 010009000003}\\par");
    row("a table",
        "\\trowd\\trgaph70\\trleft-70\\clbrdrt\\brdrs\\brdrw10\\cellx3000\\clcbpat2\\clvertalc\\cellx6000"
        "\\pard\\intbl a\\cell {\\b b}\\par c\\cell\\row\\pard after\\par");
    row("a table at the end", "\\pard x\\par\\trowd\\cellx3000\\pard\\intbl a\\cell\\row");
    row("an empty paragraph before a table",
        "\\pard\\par\\trowd\\cellx3000\\pard\\intbl a\\cell\\row\\pard\\par");
    row("a text before an empty paragraph before a table",
        "\\pard x\\par\\par\\trowd\\cellx3000\\pard\\intbl a\\cell\\row\\pard\\par");
    row("merged cells",
        "\\trowd\\clvmgf\\cellx1000\\clmgf\\cellx2000\\clmrg\\cellx3000\\pard\\intbl a\\cell "
        "b\\cell\\cell\\row"
        "\\trowd\\clvmrg\\cellx1000\\cellx2000\\cellx3000\\pard\\intbl\\cell c\\cell d\\cell\\row\\pard "
        "z\\par");
    row("rows of different edges",
        "\\trowd\\cellx1000\\cellx5000\\pard\\intbl a\\cell b\\cell\\row"
        "\\trowd\\cellx3000\\cellx5000\\pard\\intbl c\\cell d\\cell\\row\\pard z\\par");
    row("more cells than the row defines",
        "\\trowd\\cellx1000\\pard\\intbl a\\cell b\\cell c\\cell\\row\\pard z\\par");
    row("a table within a table",
        "\\trowd\\cellx5000\\pard\\intbl before\\par\\pard\\intbl\\itap2 deep\\nestcell deeper\\nestcell"
        "{\\*\\nesttableprops\\trowd\\cellx1000\\cellx2000\\nestrow}{\\nonesttables\\par}"
        "\\pard\\intbl\\itap2 second\\nestcell row\\nestcell"
        "{\\*\\nesttableprops\\trowd\\cellx1000\\cellx2000\\nestrow}{\\nonesttables\\par}"
        "\\pard\\intbl\\itap1 behind\\cell\\row\\pard z\\par");
    row("a table first in a cell",
        "\\trowd\\cellx5000\\pard\\intbl\\itap2 deep\\nestcell"
        "{\\*\\nesttableprops\\trowd\\cellx1000\\nestrow}{\\nonesttables\\par}"
        "\\pard\\intbl\\itap1\\cell\\row\\pard z\\par");
    row("a list in a table",
        "\\trowd\\cellx3000\\pard\\intbl\\ls1\\fi-360\\li720 a\\par b\\cell\\row\\pard z\\par");
    row("sections", "\\sectd\\pard a\\par\\sect\\sectd\\cols2\\pard b\\sect\\pard c\\par");
    row("sections with words and headers of their own",
        "\\sectd\\sectlinegrid360\\pard a\\par\\sect\\sectd\\sbknone\\sectlinegrid360\\cols2{\\header "
        "h}\\pard b\\sect"
        "\\pard{\\b c}\\par");
    row("a table behind the end of a section",
        "\\pard a\\par\\sect\\sectd\\trowd\\trrh425\\cellx3000\\pard\\intbl b\\cell\\row\\pard c\\par");
    row("drawings",
        "\\pard a{\\shp{\\*\\shpinst\\shpleft1{\\sp{\\sn shapeType}{\\sv "
        "20}}}}b{\\*\\do\\dpx1\\dpline}c\\par");
    row("columns", "\\pard a\\column b\\par");
    row("an object",
        "\\pard {\\object\\objemb{\\*\\objdata 0102}{\\result{\\pict\\wmetafile8\\picw9\\pich9 01}}}\\par");
    row("notes", "\\pard a{\\super\\chftn}{\\footnote\\pard\\plain {\\super\\chftn} note}b\\par");
    row("endnotes and custom marks",
        "\\pard a{\\super\\chftn}{\\footnote\\ftnalt\\pard\\plain\\s1 {\\super\\chftn} note\\par\\pard\\qr "
        "two\\par}b"
        "{\\super *}{\\footnote {\\super *} {\\b note}}\\par");
    row("comments",
        "\\pard a{\\*\\atrfstart 1}b{\\*\\atrfend 1}{\\*\\atnid An}{\\*\\atnauthor "
        "Ann}\\chatn{\\*\\annotation"
        "{\\*\\atnref 1}{\\*\\atndate 123}\\pard\\plain {\\fs16\\chatn}why}\\par");
    row("notes in a table, a list and a field",
        "\\trowd\\cellx3000\\pard\\intbl a\\chftn{\\footnote b}\\cell\\row\\pard\\ls1 c\\chftn{\\footnote "
        "\\ls1 d}\\par"
        "\\pard{\\field{\\*\\fldinst PAGE}{\\fldrslt e\\chftn{\\footnote {\\field{\\*\\fldinst "
        "DATE}{\\fldrslt f}}}g}}\\par");
}

void TestRtfRoundTrip::aLoadedDocumentStaysItself()
{
    QFETCH(QByteArray, body);
    verifyRoundTrip(rtf(body));
}

void TestRtfRoundTrip::aRealFileStaysItself_data()
{
    QTest::addColumn<QString>("path");
    for (const QString &path : sharedFiles())
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
    if (sharedFiles().isEmpty())
        QTest::newRow("none") << QString();
}

void TestRtfRoundTrip::aRealFileStaysItself()
{
    QFETCH(QString, path);
    if (path.isEmpty())
        QSKIP("no collection of files is at hand");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray octets = file.readAll();
    if (!looksLikeRtf(octets))
        QSKIP("the file is no RTF");
    verifyRoundTrip(octets);
}

void TestRtfRoundTrip::everyTypedCharacterSurvives()
{
    QString text;
    for (char32_t code = 0x20; code < 0x10000; ++code) {
        const bool isTyped = (code < 0xD800 || code > 0xDFFF) && code != 0xFDD0 && code != 0xFDD1
            && code != QChar::ObjectReplacementCharacter && code != QChar::ParagraphSeparator;
        if (isTyped)
            text += QChar(static_cast<char16_t>(code));
        if (code % 1000 == 999)
            text += QChar::ParagraphSeparator;
    }
    text += QStringLiteral(
        "\t\u2029\U0001F600\U0010FFFD\U00020000 e\u0301\u0323 \u05D0\u05B8\u200F\u0627\u0651");
    RichTextDocument document;
    QTextCursor(&document).insertText(text);
    const auto loaded = read(written(document));
    QCOMPARE(loaded->toRawText(), document.toRawText());
    QCOMPARE(loaded->toRawText(), text);
}

void TestRtfRoundTrip::aDocumentMadeHereStaysItself()
{
    RichTextDocument document;
    QTextCursor cursor(&document);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    bold.setFontFamilies({QStringLiteral("Ärial")});
    bold.setForeground(QColor(1, 2, 3));
    cursor.insertText(QStringLiteral("plain "));
    cursor.insertText(QStringLiteral("bold\n"), bold);
    QTextListFormat list;
    list.setStyle(QTextListFormat::ListUpperRoman);
    cursor.insertList(list);
    cursor.insertText(QStringLiteral("one\ntwo\n"), QTextCharFormat());
    cursor.currentList()->remove(cursor.block());
    cursor.setBlockFormat(QTextBlockFormat());
    QImage picture(4, 4, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QByteArray png;
    QBuffer buffer(&png);
    QVERIFY(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, "PNG"));
    QTextImageFormat image;
    image.setName(document.addPicture({png, {}}));
    cursor.insertImage(image);
    QTextTable *table = cursor.insertTable(2, 3);
    table->mergeCells(0, 0, 2, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("merged\ncell"));
    table->cellAt(1, 2).firstCursorPosition().insertTable(2, 2);
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("end"));
    verifyRoundTrip(document);
}

void TestRtfRoundTrip::aDamagedFileSettlesAfterOneSave_data()
{
    QTest::addColumn<QByteArray>("octets");
    const QByteArray whole
        = rtf("\\pard {\\b a}\\par\\trowd\\cellx1000\\cellx2000\\pard\\intbl b\\cell c\\cell\\row"
              "\\pard{\\field{\\*\\fldinst HYPERLINK \"http://example.org\"}{\\fldrslt d}}"
              "{\\*\\bkmkstart e}{\\pict\\pngblip 89504e47}{\\v f}\\ls1 g\\par");
    for (qsizetype length = 6; length < whole.size(); length += 7)
        QTest::addRow("cut off at %d", int(length)) << whole.left(length);
    QTest::newRow("surplus braces") << whole + "}}} tail";
    QTest::newRow("no rows end") << rtf("\\trowd\\cellx1000\\pard\\intbl a\\cell b");
    QTest::newRow("a row without a definition") << rtf("\\pard\\intbl a\\cell b\\cell\\row c");
    QTest::newRow("unbalanced kept parts") << rtf("{\\*\\bkmkstart a{b}{\\v c{d}\\par e");
    QTest::newRow("zeros and octets") << rtf(QByteArray("a\0b\xFC\x80\x01", 6));
}

void TestRtfRoundTrip::aDamagedFileSettlesAfterOneSave()
{
    QFETCH(QByteArray, octets);
    const auto loaded = read(octets);
    const QByteArray saved = written(*loaded);
    QCOMPARE(read(saved)->toRawText(), loaded->toRawText());
    verifyRoundTrip(saved);
}

void TestRtfRoundTrip::savingAgainAndAgainAddsNothing()
{
    const QByteArray first = written(*read(rtf("\\pard\\plain\\s1\\brdrb\\brdrs\\tx400 a\\par\\par")));
    QByteArray last = first;
    for (int i = 0; i < 5; ++i)
        last = written(*read(last));
    QCOMPARE(last, first);
}

void TestRtfRoundTrip::aPartReadsAsThePartItWas()
{
    RichTextDocument document;
    QTextCursor(&document).insertText(QStringLiteral("abc\ndef\n\nghi"));
    for (int from = 0; from < document.characterCount(); ++from) {
        for (int to = from; to < document.characterCount(); ++to) {
            QTextCursor cursor(&document);
            cursor.setPosition(from);
            cursor.setPosition(to, QTextCursor::KeepAnchor);
            const QByteArray part = writeRtf(document, from, to);
            QCOMPARE(part.count("\\par") - part.count("\\pard"),
                     cursor.selectedText().count(QChar::ParagraphSeparator));
            QCOMPARE(read(part, RtfExtent::Part)->toRawText(), cursor.selectedText());
        }
    }
}

QTEST_MAIN(TestRtfRoundTrip)
#include "TestRtfRoundTrip.moc"

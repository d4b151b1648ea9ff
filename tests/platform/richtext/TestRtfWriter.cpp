#include <QBuffer>
#include <QImage>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextList>
#include <QTextTable>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfWriter.h"

using namespace vandrel;

namespace {

QByteArray written(const QTextDocument &document)
{
    QByteArray rtf;
    QBuffer buffer(&rtf);
    buffer.open(QIODevice::WriteOnly);
    writeRtf(document, buffer, [] {});
    return rtf;
}

// What follows the head: paragraphs and rows, without the last brace and the default font of each paragraph.
QByteArray bodyOf(const QByteArray &rtf)
{
    const qsizetype start = rtf.indexOf("\\uc1\n") + 5;
    return rtf.mid(start, rtf.size() - start - 2).replace(R"(\pard\plain\f0)", "\\pard\\plain");
}

QByteArray bodyOf(const QTextDocument &document)
{
    return bodyOf(written(document));
}

// A document whose default format is RTF's own, so that bodies show only what a test sets.
void useDefaults(RichTextDocument &document)
{
    QFont font(QStringLiteral("Times New Roman"));
    font.setPointSizeF(12);
    document.setDefaultFont(font);
}

QTextCharFormat sized(double points)
{
    QTextCharFormat format;
    format.setFontPointSize(points);
    return format;
}

// A device that is full after some octets.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(qint64 room) : m_room(room) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }
    qint64 offered = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        offered += size;
        return offered <= m_room ? size : -1;
    }

private:
    qint64 m_room;
};

} // namespace

class TestRtfWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void anEmptyDocumentIsOneParagraph();
    void everyParagraphIsEnded();
    void charactersAreSevenBit_data();
    void charactersAreSevenBit();
    void aRunIsAGroup_data();
    void aRunIsAGroup();
    void fontsAndColoursAreEnteredOnce();
    void unsetFormatsAreTheDocumentsDefault();
    void paragraphsSayOnlyWhatDiffers_data();
    void paragraphsSayOnlyWhatDiffers();
    void aParagraphsEndKeepsItsFormat();
    void linksAreFields();
    void aFieldCoversTheParagraphsItRunsThrough();
    void nestedFieldsStayNested();
    void aListIsDefinedAndCounted();
    void listsOfEveryKindAreNumberedForOldReaders();
    void aListNumberOfAnotherDocumentIsNotTrusted();
    void tablesAreRows();
    void mergedCellsAreWrittenInEveryRow();
    void nestedTablesStandInTheirCell();
    void aLoadedRowDefinitionIsKeptWhileItFits();
    void deepTablesNeedNoDeepCalls();
    void keptPartsAreWrittenAsTheyStood();
    void loadedTablesComeFirst();
    void theGeneratorIsReplaced();
    void styledTextStatesWhatItsStyleWouldChange();
    void picturesKeepTheirOctets();
    void otherPicturesAreEncoded();
    void sectionsEndInPlaceOfTheParagraph();
    void aPartIsWrittenAlone_data();
    void aPartIsWrittenAlone();
    void aPartWithinACellIsItsText();
    void aPartOfATableTakesWholeRows();
    void writingStopsWhenTheDeviceIsFull();
    void theCallerIsCalledBetweenParagraphs();

private:
    void setPrologue(const RtfPrologue &prologue);

    std::unique_ptr<RichTextDocument> m_document;
    QTextCursor m_cursor;
};

void TestRtfWriter::init()
{
    m_document = std::make_unique<RichTextDocument>();
    useDefaults(*m_document);
    m_cursor = QTextCursor(m_document.get());
}

void TestRtfWriter::setPrologue(const RtfPrologue &prologue)
{
    QTextFrameFormat format = m_document->rootFrame()->frameFormat();
    format.setProperty(richtext::Prologue,
                       QVariant::fromValue<RtfProloguePointer>(std::make_shared<RtfPrologue>(prologue)));
    m_document->rootFrame()->setFrameFormat(format);
}

void TestRtfWriter::anEmptyDocumentIsOneParagraph()
{
    QCOMPARE(written(*m_document),
             QByteArray("{\\rtf1\\ansi\\ansicpg1252\\deff0\n"
                        "{\\fonttbl{\\f0\\fnil\\fcharset0 Times New Roman;}}\n"
                        "{\\*\\generator Vandrel;}\n"
                        "\\uc1\n"
                        "\\pard\\plain\\f0 \\par\n"
                        "}\n"));
}

void TestRtfWriter::everyParagraphIsEnded()
{
    m_cursor.insertText(QStringLiteral("a\n\nb"));
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\pard\\plain a\\par\n\\pard\\plain \\par\n\\pard\\plain b\\par\n"));
}

void TestRtfWriter::charactersAreSevenBit_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("rtf");
    QTest::newRow("braces and backslash") << QStringLiteral("{\\}") << QByteArray(R"(\{\\\})");
    QTest::newRow("tab") << QStringLiteral("a\tb") << QByteArray("a\\tab b");
    QTest::newRow("line break") << QStringLiteral("a\u2028b") << QByteArray("a\\line b");
    QTest::newRow("page break") << QStringLiteral("a\fb") << QByteArray("a\\page b");
    QTest::newRow("hard blank") << QStringLiteral("a\u00A0b") << QByteArray("a\\~b");
    QTest::newRow("soft hyphen") << QStringLiteral("a\u00ADb") << QByteArray("a\\-b");
    QTest::newRow("hard hyphen") << QStringLiteral("a\u2011b") << QByteArray("a\\_b");
    QTest::newRow("umlaut before a digit") << QStringLiteral("\u00FC1") << QByteArray("\\u252?1");
    QTest::newRow("above 32767") << QStringLiteral("\uAC00") << QByteArray("\\u-21504?");
    QTest::newRow("astral") << QStringLiteral("\U0001F600") << QByteArray("\\u-10179?\\u-8704?");
    QTest::newRow("control characters") << QStringLiteral("a\u0001\u001Fb") << QByteArray("ab");
    QTest::newRow("delete and C1") << QStringLiteral("\u007F\u0085") << QByteArray("\\u127?\\u133?");
}

void TestRtfWriter::charactersAreSevenBit()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, rtf);
    m_cursor.insertText(text);
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain " + rtf + "\\par\n"));
}

void TestRtfWriter::aRunIsAGroup_data()
{
    QTest::addColumn<QTextCharFormat>("format");
    QTest::addColumn<QByteArray>("words");
    const auto row = [](const char *name, const char *words, auto set) {
        QTextCharFormat format;
        set(format);
        QTest::newRow(name) << format << QByteArray(words);
    };
    using Format = QTextCharFormat;
    row("bold", "\\b", [](Format &format) { format.setFontWeight(QFont::Bold); });
    row("semi-bold", "\\b", [](Format &format) { format.setFontWeight(QFont::DemiBold); });
    row("italic", "\\i", [](Format &format) { format.setFontItalic(true); });
    row("underline", "\\ul", [](Format &format) { format.setFontUnderline(true); });
    row("strike", "\\strike", [](Format &format) { format.setFontStrikeOut(true); });
    row("double strike", "\\striked1", [](Format &format) {
        format.setFontStrikeOut(true);
        format.setProperty(richtext::DoubleStrike, true);
    });
    row("superscript", "\\super",
        [](Format &format) { format.setVerticalAlignment(Format::AlignSuperScript); });
    row("subscript", "\\sub", [](Format &format) { format.setVerticalAlignment(Format::AlignSubScript); });
    row("raised", "\\up6", [](Format &format) { format.setProperty(richtext::BaselineHalfPoints, 6); });
    row("lowered", "\\dn7", [](Format &format) { format.setProperty(richtext::BaselineHalfPoints, -7); });
    row("capitals", "\\caps", [](Format &format) { format.setFontCapitalization(QFont::AllUppercase); });
    row("small capitals", "\\scaps", [](Format &format) { format.setFontCapitalization(QFont::SmallCaps); });
    row("size", "\\fs17", [](Format &format) { format.setFontPointSize(8.5); });
    row("size rounded to half-points", "\\fs19", [](Format &format) { format.setFontPointSize(9.6); });
    row("the smallest size", "\\fs1", [](Format &format) { format.setFontPointSize(0.1); });
    row("font", "\\f1", [](Format &format) { format.setFontFamilies({QStringLiteral("Arial")}); });
    row("colour", "\\cf1", [](Format &format) { format.setForeground(Qt::red); });
    row("background", R"(\cb1\chcbpat1\highlight1)",
        [](Format &format) { format.setBackground(Qt::yellow); });
    row("kept words", "\\b\\lang1031", [](Format &format) {
        format.setFontWeight(QFont::Bold);
        format.setProperty(richtext::KeptWords, QByteArray("\\lang1031"));
    });
}

void TestRtfWriter::aRunIsAGroup()
{
    QFETCH(QTextCharFormat, format);
    QFETCH(QByteArray, words);
    m_cursor.insertText(QStringLiteral("a"));
    m_cursor.insertText(QStringLiteral("b"), format);
    m_cursor.insertText(QStringLiteral("c"), QTextCharFormat());
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain a{" + words + " b}c\\par\n"));
}

void TestRtfWriter::fontsAndColoursAreEnteredOnce()
{
    QTextCharFormat format;
    format.setFontFamilies({QStringLiteral("Ärial;")});
    format.setForeground(QColor(1, 2, 3));
    format.setBackground(QColor(255, 254, 253));
    m_cursor.insertText(QStringLiteral("a"), format);
    format.setFontItalic(true);
    m_cursor.insertText(QStringLiteral("b"), format);
    const QByteArray rtf = written(*m_document);
    QVERIFY(rtf.contains("{\\fonttbl{\\f0\\fnil\\fcharset0 Times New Roman;}"
                         "{\\f1\\fnil\\fcharset0 \\u196?rial;}}\n"));
    QVERIFY(rtf.contains("{\\colortbl ;\\red1\\green2\\blue3;\\red255\\green254\\blue253;}\n"));
}

void TestRtfWriter::unsetFormatsAreTheDocumentsDefault()
{
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(10);
    m_document->setDefaultFont(font);
    m_cursor.insertText(QStringLiteral("a"));
    QVERIFY(written(*m_document).contains("\\deff0\n{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}}"));
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain {\\fs20 a}{\\fs20\\par}\n"));
}

void TestRtfWriter::paragraphsSayOnlyWhatDiffers_data()
{
    QTest::addColumn<QTextBlockFormat>("format");
    QTest::addColumn<QByteArray>("words");
    const auto row = [](const char *name, const char *words, auto set) {
        QTextBlockFormat format;
        set(format);
        QTest::newRow(name) << format << QByteArray(words);
    };
    using Format = QTextBlockFormat;
    row("left", "", [](Format &format) { format.setAlignment(Qt::AlignLeft); });
    row("right", "\\qr", [](Format &format) { format.setAlignment(Qt::AlignRight); });
    row("centred", "\\qc", [](Format &format) { format.setAlignment(Qt::AlignHCenter); });
    row("justified", "\\qj", [](Format &format) { format.setAlignment(Qt::AlignJustify); });
    row("right to left", "\\rtlpar\\qr", [](Format &format) { format.setLayoutDirection(Qt::RightToLeft); });
    row("right to left, at the left", "\\rtlpar", [](Format &format) {
        format.setLayoutDirection(Qt::RightToLeft);
        format.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    });
    row("margins", R"(\fi-150\li720\ri30\sb240\sa15)", [](Format &format) {
        format.setLeftMargin(48);
        format.setRightMargin(2);
        format.setTextIndent(-10);
        format.setTopMargin(16);
        format.setBottomMargin(1);
    });
    row("steps of indent", "\\li1200", [](Format &format) { format.setIndent(2); });
    row("one and a half lines", "\\sl360\\slmult1",
        [](Format &format) { format.setLineHeight(150, Format::ProportionalHeight); });
    row("at least", "\\sl300\\slmult0",
        [](Format &format) { format.setLineHeight(20, Format::MinimumHeight); });
    row("exactly", "\\sl-300\\slmult0",
        [](Format &format) { format.setLineHeight(20, Format::FixedHeight); });
    row("tabs", R"(\tx720\tqr\tx1440\tqc\tx2160\tqdec\tx2880)", [](Format &format) {
        format.setTabPositions({{48, QTextOption::LeftTab},
                                {96, QTextOption::RightTab},
                                {144, QTextOption::CenterTab},
                                {192, QTextOption::DelimiterTab, u'.'}});
    });
    row("together", R"(\keep\keepn\pagebb)", [](Format &format) {
        format.setNonBreakableLines(true);
        format.setProperty(richtext::KeepWithNext, true);
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    });
    row("shaded", "\\cbpat1", [](Format &format) { format.setBackground(Qt::green); });
    row("kept words", R"(\qc\brdrt\brdrs)", [](Format &format) {
        format.setAlignment(Qt::AlignHCenter);
        format.setProperty(richtext::KeptWords, QByteArray("\\brdrt\\brdrs"));
    });
    row("beyond every page", "\\li31680", [](Format &format) { format.setLeftMargin(1e9); });
}

void TestRtfWriter::paragraphsSayOnlyWhatDiffers()
{
    QFETCH(QTextBlockFormat, format);
    QFETCH(QByteArray, words);
    m_cursor.setBlockFormat(format);
    m_cursor.insertText(QStringLiteral("a"));
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain" + words + " a\\par\n"));
}

void TestRtfWriter::aParagraphsEndKeepsItsFormat()
{
    m_cursor.setBlockCharFormat(sized(20));
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain {\\fs40\\par}\n"));
}

void TestRtfWriter::linksAreFields()
{
    QTextCharFormat link;
    link.setAnchor(true);
    link.setAnchorHref(QStringLiteral("https://example.org/a\"b\\c"));
    m_cursor.insertText(QStringLiteral("here"), link);
    link.setFontItalic(true);
    m_cursor.insertText(QStringLiteral(" too"), link);
    m_cursor.insertText(QStringLiteral("."), QTextCharFormat());
    QCOMPARE(
        bodyOf(*m_document),
        QByteArray("\\pard\\plain {\\field{\\*\\fldinst{HYPERLINK \"https://example.org/a\\\\\"b\\\\\\\\c\"}}"
                   "{\\fldrslt here{\\i  too}}}.\\par\n"));
}

void TestRtfWriter::aFieldCoversTheParagraphsItRunsThrough()
{
    QTextCharFormat field;
    field.setProperty(richtext::FieldId, 7);
    field.setProperty(richtext::FieldInstruction, QByteArray("{\\*\\fldinst TOC}"));
    m_cursor.insertText(QStringLiteral("one"), field);
    m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    m_cursor.insertText(QStringLiteral("two"), field);
    m_cursor.insertText(QStringLiteral("rest"), QTextCharFormat());
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\pard\\plain {\\field{\\*\\fldinst TOC}{\\fldrslt one\\par\n"
                        "\\pard\\plain two}}\\pard\\plain rest\\par\n"));
}

void TestRtfWriter::nestedFieldsStayNested()
{
    QTextCharFormat outer;
    outer.setProperty(richtext::FieldId, 1);
    outer.setProperty(richtext::FieldInstruction, QByteArray("{\\*\\fldinst TOC}"));
    QTextCharFormat inner;
    inner.setProperty(richtext::FieldId, 2);
    inner.setProperty(richtext::FieldInstruction, QByteArray("{\\*\\fldinst PAGEREF}"));
    inner.setProperty(richtext::OuterFields, QVariantList{1, QByteArray("{\\*\\fldinst TOC}")});
    m_cursor.insertText(QStringLiteral("a"), outer);
    m_cursor.insertText(QStringLiteral("b"), inner);
    m_cursor.insertText(QStringLiteral("c"), outer);
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\pard\\plain {\\field{\\*\\fldinst TOC}{\\fldrslt a"
                        "{\\field{\\*\\fldinst PAGEREF}{\\fldrslt b}}c}}\\par\n"));
}

void TestRtfWriter::aListIsDefinedAndCounted()
{
    QTextListFormat format;
    format.setStyle(QTextListFormat::ListDecimal);
    format.setNumberPrefix(QStringLiteral("("));
    format.setNumberSuffix(QStringLiteral(")"));
    m_cursor.insertText(QStringLiteral("a"));
    m_cursor.createList(format);
    m_cursor.insertText(QStringLiteral("\nb"));
    const QByteArray rtf = written(*m_document);
    QVERIFY(
        rtf.contains("{\\*\\listtable{\\list\\listtemplateid900000001{\\listlevel\\levelnfc0\\levelnfcn0"));
    QVERIFY(rtf.contains("\\levelstartat1{\\leveltext\\'03(\\'00);}{\\levelnumbers\\'02;}\\fi-360\\li720}"));
    QVERIFY(
        rtf.contains("{\\*\\listoverridetable{\\listoverride\\listid900000001\\listoverridecount0\\ls1}}"));
    QCOMPARE(bodyOf(rtf),
             QByteArray("\\pard\\plain\\ls1\\fi-360\\li600 {\\listtext (1)\\tab}a\\par\n"
                        "\\pard\\plain\\ls1\\fi-360\\li600 {\\listtext (2)\\tab}b\\par\n"));
}

void TestRtfWriter::listsOfEveryKindAreNumberedForOldReaders()
{
    const QList<std::pair<QTextListFormat::Style, QByteArray>> kinds{
        {QTextListFormat::ListDisc, "\\u8226?"},    {QTextListFormat::ListCircle, "\\u9702?"},
        {QTextListFormat::ListSquare, "\\u9642?"},  {QTextListFormat::ListUpperRoman, "XXIX."},
        {QTextListFormat::ListLowerRoman, "xxix."}, {QTextListFormat::ListUpperAlpha, "AC."},
        {QTextListFormat::ListLowerAlpha, "ac."},
    };
    for (const auto &[style, marker] : kinds) {
        init();
        QTextListFormat format;
        format.setStyle(style);
        m_cursor.createList(format);
        for (int i = 1; i < 29; ++i)
            m_cursor.insertBlock();
        QVERIFY2(bodyOf(*m_document).endsWith(" {\\listtext " + marker + "\\tab}\\par\n"),
                 marker.constData());
    }
}

void TestRtfWriter::aListNumberOfAnotherDocumentIsNotTrusted()
{
    RtfPrologue prologue;
    prologue.listTable = R"({\*\listtable{\list{\listlevel\levelnfc23{\leveltext\'01\u8226 ?;}}\listid5}})";
    prologue.listOverrideTable = R"({\*\listoverridetable{\listoverride\listid5\ls4}})";
    setPrologue(prologue);
    QTextListFormat format;
    format.setStyle(QTextListFormat::ListDecimal);
    format.setProperty(richtext::ListOverride, 4);
    m_cursor.createList(format);
    QVERIFY(bodyOf(*m_document).startsWith("\\pard\\plain\\ls5\\"));
    QTextListFormat bullets;
    bullets.setStyle(QTextListFormat::ListDisc);
    bullets.setIndent(0);
    bullets.setProperty(richtext::ListOverride, 4);
    m_cursor.createList(bullets);
    QVERIFY(bodyOf(*m_document).startsWith("\\pard\\plain\\ls4 "));
}

void TestRtfWriter::tablesAreRows()
{
    QTextTableFormat format;
    format.setColumnWidthConstraints(
        {QTextLength(QTextLength::FixedLength, 100), QTextLength(QTextLength::PercentageLength, 50)});
    format.setBorder(1);
    QTextTable *table = m_cursor.insertTable(1, 2, format);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("a\nb"));
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("c"));
    const QByteArray border("\\clbrdrt\\brdrs\\brdrw15\\clbrdrl\\brdrs\\brdrw15"
                            "\\clbrdrb\\brdrs\\brdrw15\\clbrdrr\\brdrs\\brdrw15");
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\trowd\\trgaph108" + border + "\\cellx1500" + border
                        + "\\cellx6180\n"
                          "\\pard\\plain\\intbl a\\par\n\\pard\\plain\\intbl b\\cell\n"
                          "\\pard\\plain\\intbl c\\cell\n\\row\n"
                          "\\pard\\plain \\par\n"));
}

void TestRtfWriter::mergedCellsAreWrittenInEveryRow()
{
    QTextTableFormat format;
    format.setBorder(0);
    QTextTable *table = m_cursor.insertTable(2, 3, format);
    table->mergeCells(0, 0, 2, 1);
    table->mergeCells(0, 1, 1, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("tall"));
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("wide"));
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\trowd\\trgaph108\\clvmgf\\cellx3120\\cellx9360\n"
                        "\\pard\\plain\\intbl tall\\cell\n"
                        "\\pard\\plain\\intbl wide\\cell\n\\row\n"
                        "\\trowd\\trgaph108\\clvmrg\\cellx3120\\cellx6240\\cellx9360\n"
                        "\\pard\\plain\\intbl\\cell\n"
                        "\\pard\\plain\\intbl \\cell\n"
                        "\\pard\\plain\\intbl \\cell\n\\row\n"
                        "\\pard\\plain \\par\n"));
}

void TestRtfWriter::nestedTablesStandInTheirCell()
{
    QTextTableFormat format;
    format.setBorder(0);
    QTextTable *outer = m_cursor.insertTable(1, 1, format);
    QTextCursor inside = outer->cellAt(0, 0).firstCursorPosition();
    inside.insertText(QStringLiteral("before"));
    QTextTable *inner = inside.insertTable(1, 1, format);
    inner->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("deep"));
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\trowd\\trgaph108\\cellx9360\n"
                        "\\pard\\plain\\intbl before\\par\n"
                        "\\pard\\plain\\intbl\\itap2 deep\\nestcell\n"
                        "{\\*\\nesttableprops\\trowd\\trgaph108\\cellx9360\\nestrow}{\\nonesttables\\par}\n"
                        "\\pard\\plain\\intbl \\cell\n\\row\n"
                        "\\pard\\plain \\par\n"));
}

void TestRtfWriter::aLoadedRowDefinitionIsKeptWhileItFits()
{
    QTextTableFormat format;
    format.setBorder(0);
    format.setProperty(richtext::RowDefinitions,
                       QVariantList{QByteArray(R"(\trowd\trkeep\cellx77\cellx99)")});
    QTextTable *table = m_cursor.insertTable(1, 2, format);
    QVERIFY(bodyOf(*m_document).startsWith("\\trowd\\trkeep\\cellx77\\cellx99\n"));
    table->appendColumns(1);
    QVERIFY(bodyOf(*m_document).startsWith("\\trowd\\trgaph108\\cellx3120\\cellx6240\\cellx9360\n"));
    table->removeColumns(2, 1);
    table->appendRows(1);
    QVERIFY(bodyOf(*m_document).startsWith("\\trowd\\trgaph108\\cellx4680\\cellx9360\n"));
}

void TestRtfWriter::deepTablesNeedNoDeepCalls()
{
    constexpr int depth = 400;
    QTextTableFormat format;
    format.setBorder(0);
    for (int i = 0; i < depth; ++i)
        m_cursor = m_cursor.insertTable(1, 1, format)->cellAt(0, 0).firstCursorPosition();
    m_cursor.insertText(QStringLiteral("deepest"));
    const QByteArray body = bodyOf(*m_document);
    QCOMPARE(body.count("\\nestrow"), depth - 1);
    QVERIFY(body.contains("\\itap400 deepest\\nestcell"));
}

void TestRtfWriter::keptPartsAreWrittenAsTheyStood()
{
    const QByteArray raw("{\\*\\bkmkstart \x80\xFF{\\'e4}}");
    QTextCharFormat object;
    object.setObjectType(richtext::RawObject);
    object.setProperty(richtext::RawRtf, raw);
    m_cursor.insertText(QStringLiteral("a"));
    m_cursor.insertText(QString(2, QChar::ObjectReplacementCharacter), object);
    m_cursor.insertText(QStringLiteral("b"), QTextCharFormat());
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain a" + raw + raw + "b\\par\n"));
}

void TestRtfWriter::loadedTablesComeFirst()
{
    RtfPrologue prologue;
    prologue.header = R"(\ansi\ansicpg1250\deff3\deflang1029)";
    prologue.fonts = {{3, 238, QStringLiteral("Arial"), R"(\f3\fswiss\fcharset238 Arial CE;)"},
                      {9, -1, QStringLiteral("Courier"), "\\f9 Courier;"}};
    prologue.colours = {QColor(), QColor(0, 0, 255)};
    prologue.styleSheet = "{\\stylesheet{\\s0 Normal;}}";
    prologue.otherGroups = {"{\\info{\\author A}}"};
    prologue.pageSetup = "\\paperw11906\\margl1000";
    prologue.headersAndFooters = {R"({\header\pard top\par})"};
    setPrologue(prologue);
    QTextCharFormat format;
    format.setFontFamilies({QStringLiteral("Verdana")});
    format.setForeground(Qt::red);
    m_cursor.insertText(QStringLiteral("a"), format);
    format.setFontFamilies({QStringLiteral("Courier")});
    format.setForeground(Qt::blue);
    m_cursor.insertText(QStringLiteral("b"), format);
    const QByteArray rtf = written(*m_document);
    QVERIFY(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1250\\deff3\\deflang1029\n"
                           "{\\fonttbl{\\f3\\fswiss\\fcharset238 Arial CE;}{\\f9 Courier;}"
                           "{\\f10\\fnil\\fcharset0 Verdana;}}\n"
                           "{\\colortbl ;\\red0\\green0\\blue255;\\red255\\green0\\blue0;}\n"
                           "{\\stylesheet{\\s0 Normal;}}\n"
                           "{\\*\\generator Vandrel;}\n"
                           "{\\info{\\author A}}\n"
                           "\\paperw11906\\margl1000\n"
                           "{\\header\\pard top\\par}\n"));
    QCOMPARE(bodyOf(rtf), QByteArray("\\pard\\plain\\f3 {\\f10\\cf2 a}{\\f9\\cf1 b}\\par\n"));
}

void TestRtfWriter::theGeneratorIsReplaced()
{
    RtfPrologue prologue;
    prologue.otherGroups = {"{\\*\\generator Other 1.0;}", R"({\*\rsidtbl\rsid1})"};
    setPrologue(prologue);
    const QByteArray rtf = written(*m_document);
    QVERIFY(!rtf.contains("Other"));
    QVERIFY(rtf.contains("{\\*\\generator Vandrel;}\n{\\*\\rsidtbl\\rsid1}\n"));
}

void TestRtfWriter::styledTextStatesWhatItsStyleWouldChange()
{
    RtfPrologue prologue;
    prologue.fonts = {{0, 0, QStringLiteral("Times New Roman"), "\\f0 Times New Roman;"}};
    prologue.styleSheet = R"({\stylesheet{\s1\qc\sb240\b\cf1\fs32 heading;}{\*\cs2\i emphasis;}})";
    prologue.colours = {QColor(), QColor(Qt::red)};
    setPrologue(prologue);
    QTextBlockFormat heading;
    heading.setProperty(richtext::ParagraphStyle, 1);
    m_cursor.setBlockFormat(heading);
    m_cursor.setBlockCharFormat(QTextCharFormat());
    m_cursor.insertText(QStringLiteral("plain"), QTextCharFormat());
    QTextCharFormat emphasis;
    emphasis.setProperty(richtext::CharacterStyle, 2);
    emphasis.setFontWeight(QFont::Bold);
    emphasis.setFontPointSize(16);
    emphasis.setForeground(Qt::red);
    m_cursor.insertText(QStringLiteral("bold"), emphasis);
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\pard\\plain\\s1\\f0\\ql\\sb0 {\\fs24\\b0\\cf0 plain}"
                        "{\\cs2\\fs32\\b\\i0\\cf1 bold}{\\fs24\\b0\\cf0\\par}\n"));
}

void TestRtfWriter::picturesKeepTheirOctets()
{
    const QByteArray loaded(R"({\pict\wmetafile8\picw10\pich10 0102})");
    QTextImageFormat image;
    image.setName(m_document->addPicture({}));
    image.setProperty(richtext::PictureRtf, loaded);
    m_cursor.insertImage(image);
    QCOMPARE(bodyOf(*m_document), QByteArray("\\pard\\plain " + loaded + "\\par\n"));
}

void TestRtfWriter::otherPicturesAreEncoded()
{
    QImage picture(3, 2, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QByteArray png;
    QByteArray bmp;
    for (const auto &[octets, kind] : {std::pair(&png, "PNG"), std::pair(&bmp, "BMP")}) {
        QBuffer buffer(octets);
        QVERIFY(buffer.open(QIODevice::WriteOnly) && picture.save(&buffer, kind));
    }
    QTextImageFormat image;
    image.setName(m_document->addPicture({png, {}}));
    m_cursor.insertImage(image);
    const QByteArray fromPng = bodyOf(*m_document);
    QVERIFY(fromPng.startsWith("\\pard\\plain {\\pict\\pngblip\\picw3\\pich2\\picwgoal45\\pichgoal30\n"
                               + png.left(64).toHex()));
    m_document->clear();
    image.setName(m_document->addPicture({bmp, {100, 200}}));
    m_cursor.insertImage(image);
    QVERIFY(
        bodyOf(*m_document)
            .startsWith("\\pard\\plain {\\pict\\pngblip\\picw3\\pich2\\picwgoal100\\pichgoal200\n89504e47"));
}

void TestRtfWriter::sectionsEndInPlaceOfTheParagraph()
{
    QTextBlockFormat end;
    end.setProperty(richtext::SectionEnd, QByteArray(R"(\sect\sectd\cols2)"));
    m_cursor.setBlockFormat(end);
    m_cursor.insertText(QStringLiteral("a"));
    m_cursor.insertBlock(QTextBlockFormat());
    m_cursor.insertText(QStringLiteral("b"));
    QCOMPARE(bodyOf(*m_document),
             QByteArray("\\pard\\plain a\\sect\n\\sectd\\cols2\n\\pard\\plain b\\par\n"));
    m_cursor.insertBlock(end);
    m_cursor.insertBlock(QTextBlockFormat());
    QVERIFY(bodyOf(*m_document).endsWith("\\pard\\plain \\par\\sect\n\\sectd\\cols2\n\\pard\\plain \\par\n"));
}

void TestRtfWriter::aPartIsWrittenAlone_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("within a paragraph") << 1 << 3 << QByteArray("\\pard\\plain bc");
    QTest::newRow("over an end") << 3 << 5 << QByteArray("\\pard\\plain d\\par\n");
    QTest::newRow("with an end and no more") << 0 << 5 << QByteArray("\\pard\\plain abcd\\par\n");
    QTest::newRow("across paragraphs") << 2 << 7 << QByteArray("\\pard\\plain cd\\par\n\\pard\\plain ef");
    QTest::newRow("nothing") << 2 << 2 << QByteArray("\\pard\\plain ");
    QTest::newRow("clamped") << -5 << 500 << QByteArray("\\pard\\plain abcd\\par\n\\pard\\plain efgh");
    QTest::newRow("turned round") << 3 << 1 << QByteArray("\\pard\\plain ");
}

void TestRtfWriter::aPartIsWrittenAlone()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QByteArray, body);
    m_cursor.insertText(QStringLiteral("abcd\nefgh"));
    QCOMPARE(bodyOf(writeRtf(*m_document, from, to)), body);
}

void TestRtfWriter::aPartWithinACellIsItsText()
{
    QTextTable *table = m_cursor.insertTable(1, 2);
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("abc"));
    const int start = table->cellAt(0, 1).firstPosition();
    QCOMPARE(bodyOf(writeRtf(*m_document, start + 1, start + 3)), QByteArray("\\pard\\plain bc"));
}

void TestRtfWriter::aPartOfATableTakesWholeRows()
{
    QTextTableFormat format;
    format.setBorder(0);
    QTextTable *table = m_cursor.insertTable(3, 2, format);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 2; ++column)
            table->cellAt(row, column).firstCursorPosition().insertText(QStringLiteral("ab"));
    }
    const int from = table->cellAt(0, 1).firstPosition() + 1;
    const int to = table->cellAt(1, 0).firstPosition() + 1;
    const QByteArray rows = bodyOf(writeRtf(*m_document, from, to));
    QCOMPARE(rows.count("\\row\n"), 2);
    QCOMPARE(rows.count("\\cell\n"), 4);
    QCOMPARE(rows,
             QByteArray("\\trowd\\trgaph108\\cellx4680\\cellx9360\n"
                        "\\pard\\plain\\intbl\\cell\n\\pard\\plain\\intbl b\\cell\n\\row\n"
                        "\\trowd\\trgaph108\\cellx4680\\cellx9360\n"
                        "\\pard\\plain\\intbl a\\cell\n\\pard\\plain\\intbl\\cell\n\\row\n"));
}

void TestRtfWriter::writingStopsWhenTheDeviceIsFull()
{
    for (int i = 0; i < 20'000; ++i)
        m_cursor.insertText(QStringLiteral("a line of forty octets or a little more\n"));
    FullDevice device(100'000);
    writeRtf(*m_document, device, [] {});
    QVERIFY(device.offered > 100'000);
    QVERIFY(device.offered < 300'000);
}

void TestRtfWriter::theCallerIsCalledBetweenParagraphs()
{
    m_cursor.insertText(QString(99, QLatin1Char('\n')));
    QByteArray rtf;
    QBuffer buffer(&rtf);
    buffer.open(QIODevice::WriteOnly);
    int calls = 0;
    writeRtf(*m_document, buffer, [&calls] { ++calls; });
    QVERIFY(calls >= 100);
}

QTEST_MAIN(TestRtfWriter)
#include "TestRtfWriter.moc"

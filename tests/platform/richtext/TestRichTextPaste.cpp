#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextList>
#include <QTextTable>

#include "controls/ListMarker.h"
#include "controls/RichTextPaste.h"
#include "platform/richtext/RtfReader.h"
#include "platform/richtext/RtfWriter.h"
#include "tests/support/DocumentDump.h"

using namespace vandrel;

namespace {

std::unique_ptr<RichTextDocument> read(const QByteArray &body, RtfExtent extent)
{
    DocumentProgress progress;
    const QByteArray rtf
        = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Serif;}}"
          "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat4{\\leveltext\\'02\\'00.;}"
          "{\\levelnumbers\\'01;}\\fi-360\\li720}\\listid7}}"
          "{\\*\\listoverridetable{\\listoverride\\listid7\\listoverridecount0\\ls1}}"
        + body + '}';
    return readRtf(rtf, progress, extent).document;
}

// The paragraphs with what is before them: the alignment's first letter, and a list's number.
QString shown(const QTextDocument &document)
{
    QStringList paragraphs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QString before;
        if (block.blockFormat().alignment() & Qt::AlignHCenter)
            before = QStringLiteral("c:");
        if (block.blockFormat().alignment() & Qt::AlignRight)
            before = QStringLiteral("r:");
        if (const QTextList *list = block.textList())
            before += listMarkerText(list->format(), list->itemNumber(block));
        paragraphs += before + block.text();
    }
    return paragraphs.join(u'/');
}

QByteArray part(const QTextDocument &document, int from, int to)
{
    return writeRtf(document, from, to);
}

std::unique_ptr<RichTextDocument> readPart(const QByteArray &rtf)
{
    DocumentProgress progress;
    return readRtf(rtf, progress, RtfExtent::Part).document;
}

} // namespace

class TestRichTextPaste : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherProgramsText_data();
    void anotherProgramsText();
    void pastingIsOneStep();
    void everyPartComesBackAsItWas();
    void aWholeParagraphKeepsItsFormat();
    void aListKeepsItsNumbers();
    void aTableComesBack();
    void notesGoToTheEnd();
    void aMarkThatMovesKeepsItsNote();
};

void TestRichTextPaste::anotherProgramsText_data()
{
    QTest::addColumn<QByteArray>("target"); // a bar is where it is pasted
    QTest::addColumn<QByteArray>("pasted");
    QTest::addColumn<QString>("result");
    const auto row = [](const char *name, const QByteArray &target, const QByteArray &pasted,
                        const QString &result) { QTest::newRow(name) << target << pasted << result; };
    row("words", "x|y", "A", QStringLiteral("xAy"));
    row("a paragraph with its break", "x|y", "A\\par", QStringLiteral("xA/y"));
    row("a paragraph with its break at a beginning", "|y", "A\\par", QStringLiteral("A/y"));
    row("a break alone", "x|y", "\\par", QStringLiteral("x/y"));
    row("two paragraphs", "x|y", "A\\par B\\par", QStringLiteral("xA/B/y"));
    row("two paragraphs, the last without a break", "x|y", "A\\par B", QStringLiteral("xA/By"));
    row("an empty paragraph at the end", "x|y", "A\\par\\par", QStringLiteral("xA//y"));
    row("nothing", "x|y", "", QStringLiteral("xy"));
    row("nothing but formats", "x|y", "\\pard\\qc\\b", QStringLiteral("xy"));
    row("a bookmark behind the break", "x|y", "A\\par{\\*\\bkmkend a}", QStringLiteral("xA/\uFFFCy"));
    row("a centred paragraph at a beginning", "\\qr |y", "\\qc A\\par", QStringLiteral("c:A/r:y"));
    row("a centred paragraph inside another", "\\qr x|y", "\\qc A\\par", QStringLiteral("r:xA/r:y"));
    row("centred words", "\\qr x|y", "\\qc A", QStringLiteral("r:xAy"));
    row("centred paragraphs into an empty one", "\\qr |", "\\qc A\\par B", QStringLiteral("c:A/c:B"));
    row("a list before a paragraph", "|y", "\\ls1 A\\par B\\par", QStringLiteral("4.A/5.B/y"));
    row("a list between paragraphs", "w\\par|\\par y", "\\ls1 A\\par B", QStringLiteral("w/4.A/5.B/y"));
}

void TestRichTextPaste::anotherProgramsText()
{
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, pasted);
    const auto document = read(target, RtfExtent::Document);
    QTextCursor cursor = document->find(QStringLiteral("|"));
    insertRichText(cursor, *read(pasted, RtfExtent::Part));
    QTEST(shown(*document), "result");
}

void TestRichTextPaste::pastingIsOneStep()
{
    const auto document = read("\\qr |y", RtfExtent::Document);
    const QString before = dumpOf(*document);
    insertRichText(document->find(QStringLiteral("|")), *read("\\qc A\\par B\\par", RtfExtent::Part));
    QCOMPARE(shown(*document), QStringLiteral("c:A/c:B/r:y"));
    document->undo();
    QCOMPARE(firstDifference(dumpOf(*document), before), QString());
}

void TestRichTextPaste::everyPartComesBackAsItWas()
{
    const auto document = read("\\qc abc\\par{\\b d}ef\\par\\par\\qr ghi", RtfExtent::Document);
    const QString whole = document->toRawText();
    for (int from = 0; from < document->characterCount(); ++from) {
        for (int to = from; to < document->characterCount(); ++to) {
            const auto copy = read("\\qc abc\\par{\\b d}ef\\par\\par\\qr ghi", RtfExtent::Document);
            QTextCursor cursor(copy.get());
            cursor.setPosition(from);
            cursor.setPosition(to, QTextCursor::KeepAnchor);
            insertRichText(cursor, *readPart(part(*copy, from, to)));
            QCOMPARE(copy->toRawText(), whole);
        }
    }
}

void TestRichTextPaste::aWholeParagraphKeepsItsFormat()
{
    const QByteArray body = "w\\par\\pard\\qc abc\\par\\pard\\qr y";
    const auto document = read(body, RtfExtent::Document);
    const QTextBlock middle = document->begin().next();
    QTextCursor cursor(document.get());
    cursor.setPosition(middle.position());
    cursor.setPosition(middle.position() + middle.length(), QTextCursor::KeepAnchor);
    const QByteArray cut = part(*document, cursor.selectionStart(), cursor.selectionEnd());
    cursor.removeSelectedText();
    QCOMPARE(shown(*document), QStringLiteral("w/r:y"));
    insertRichText(cursor, *readPart(cut));
    QCOMPARE(firstDifference(dumpOf(*document), dumpOf(*read(body, RtfExtent::Document))), QString());
}

void TestRichTextPaste::aListKeepsItsNumbers()
{
    const auto document = read("\\ls1 a\\par b\\par\\pard c", RtfExtent::Document);
    const auto other = read("x\\par", RtfExtent::Document);
    QTextCursor cursor(other.get());
    insertRichText(cursor, *readPart(part(*document, 0, 4)));
    QCOMPARE(shown(*other), QStringLiteral("4.a/5.b/x"));
    // The other document knows the list by a number of its own.
    const auto saved = readPart(part(*other, 0, other->characterCount()));
    QCOMPARE(shown(*saved), QStringLiteral("4.a/5.b/x"));
}

void TestRichTextPaste::aTableComesBack()
{
    const auto document = read(
        "w\\par\\trowd\\cellx1000\\cellx2000\\pard\\intbl a\\cell b\\cell\\row\\pard y", RtfExtent::Document);
    const QTextTable *table = qobject_cast<QTextTable *>(document->rootFrame()->childFrames().first());
    const auto other = read("x", RtfExtent::Document);
    QTextCursor cursor(other.get());
    insertRichText(cursor, *readPart(part(*document, table->firstPosition() - 1, table->lastPosition() + 1)));
    QCOMPARE(other->rootFrame()->childFrames().size(), 1);
    const auto *pasted = qobject_cast<QTextTable *>(other->rootFrame()->childFrames().first());
    QVERIFY(pasted);
    QCOMPARE(pasted->cellAt(0, 1).firstCursorPosition().block().text(), QStringLiteral("b"));
    QCOMPARE(other->lastBlock().text(), QStringLiteral("x"));
}

void TestRichTextPaste::notesGoToTheEnd()
{
    const auto document = read("a\\chftn{\\footnote b}\\par |c\\par", RtfExtent::Document);
    insertRichText(document->find(QStringLiteral("|")),
                   *read("\\qc d\\chftn{\\footnote e\\par f}\\par", RtfExtent::Part));
    QCOMPARE(shown(*document), QStringLiteral("a\uFFFC/c:d\uFFFC/c/b/e/f"));
    const auto saved = readPart(part(*document, 0, document->characterCount()));
    QCOMPARE(saved->toRawText(), document->toRawText());
    QCOMPARE(saved->begin().next().next().next().blockFormat().intProperty(richtext::NoteId), 1);
    QCOMPARE(saved->lastBlock().blockFormat().intProperty(richtext::NoteId), 2);
}

void TestRichTextPaste::aMarkThatMovesKeepsItsNote()
{
    const auto document = read("a\\chftn{\\footnote b}c|d", RtfExtent::Document);
    QTextCursor cursor(document.get());
    cursor.setPosition(1);
    cursor.setPosition(2, QTextCursor::KeepAnchor);
    const QByteArray cut = part(*document, 1, 2);
    QVERIFY(cut.contains("\\footnote"));
    cursor.removeSelectedText();
    QCOMPARE(shown(*document), QStringLiteral("ac|d/b"));
    insertRichText(document->find(QStringLiteral("|")), *readPart(cut));
    QCOMPARE(shown(*document), QStringLiteral("ac\uFFFCd/b"));
    QVERIFY(part(*document, 0, document->characterCount()).contains("\\footnote"));
}

QTEST_MAIN(TestRichTextPaste)
#include "TestRichTextPaste.moc"

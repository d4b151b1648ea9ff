#include <QSignalSpy>
#include <QTest>
#include <QTextTable>

#include "ScriptedFiles.h"
#include "controls/RichTextBox.h"
#include "runtime/RuntimeError.h"

using namespace vandrel;

namespace {

// The number of the failure that `operation` raises; 0 when it raises none.
template<typename Operation>
int raisedBy(Operation &&operation)
{
    try {
        operation();
    } catch (const RuntimeError &failure) {
        return failure.number();
    }
    return 0;
}

} // namespace

class TestRichTextBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void everyParagraphEndCountsTwo();
    void positionsInsidePairsAreTakenAsTheOneBefore();
    void aNegativePositionIsAnInvalidPropertyValue();
    void tableBordersAreParagraphEnds();
    void mixedSelectionsReadAsNull();
    void typedTextGetsTheFormatSetAtTheCaret();
    void changeIsRaisedOnceForEachChangeOfText();
    void changeIsNotRaisedForFormats();
    void undoingTextRaisesChangeAndUndoingFormatDoesNot();
    void replacingAsMuchTextRaisesChange();
    void selChangeIsRaisedOnceForAMove();
    void findWithoutStartSearchesTheWholeText();
    void findWithStartWalksOn();
    void findCrossesParagraphEnds();
    void aFailedFindLeavesTheSelection();
    void groupedChangesAreOneUndoStep();
    void aPausedGroupIsStillOneUndoStep();
    void aSmallFileIsThereAtOnce();
    void aLargeFileIsReadInTheBackground();
    void aMissingFileRaisesItsError();

private:
    std::shared_ptr<ScriptedFiles> files;
    std::unique_ptr<RichTextBox> box;
    std::unique_ptr<QSignalSpy> changes;
    std::unique_ptr<QSignalSpy> selChanges;
};

void TestRichTextBox::init()
{
    changes.reset();
    selChanges.reset();
    files = std::make_shared<ScriptedFiles>();
    box = std::make_unique<RichTextBox>(files);
    box->resize(400, 300);
    changes = std::make_unique<QSignalSpy>(box.get(), &RichTextBox::Change);
    selChanges = std::make_unique<QSignalSpy>(box.get(), &RichTextBox::SelChange);
}

void TestRichTextBox::everyParagraphEndCountsTwo()
{
    box->setText(QStringLiteral("a\nbc\r\nd\re"));
    QCOMPARE(box->text(), QStringLiteral("a\r\nbc\r\nd\r\ne"));
    QCOMPARE(box->textLength(), 11);
    box->setSelStart(3);
    box->setSelLength(5);
    QCOMPARE(box->SelText(), QStringLiteral("bc\r\nd"));
    QCOMPARE(box->SelStart(), 3);
    QCOMPARE(box->SelLength(), 5);
    box->setSelLength(1000);
    QCOMPARE(box->SelText(), QStringLiteral("bc\r\nd\r\ne"));
}

void TestRichTextBox::positionsInsidePairsAreTakenAsTheOneBefore()
{
    box->setText(QStringLiteral("a\n\U0001F600b"));
    box->setSelStart(2);
    QCOMPARE(box->SelStart(), 1);
    box->setSelStart(4);
    QCOMPARE(box->SelStart(), 3);
    box->setSelLength(3);
    QCOMPARE(box->SelText(), QStringLiteral("\U0001F600b"));
}

void TestRichTextBox::aNegativePositionIsAnInvalidPropertyValue()
{
    QCOMPARE(raisedBy([this] { box->setSelStart(-1); }), error::InvalidPropertyValue);
    QCOMPARE(raisedBy([this] { box->setSelLength(-1); }), error::InvalidPropertyValue);
}

void TestRichTextBox::tableBordersAreParagraphEnds()
{
    QTextCursor cursor(box->document());
    cursor.insertText(QStringLiteral("before"));
    QTextTable *table = cursor.insertTable(1, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("x"));
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("y"));
    const QString text = box->text();
    QCOMPARE(text, QStringLiteral("before\r\nx\r\ny\r\n"));
    QCOMPARE(box->textLength(), text.size());
    QCOMPARE(box->find(QStringLiteral("x\ny")), text.indexOf(QStringLiteral("x\r\ny")));
    QCOMPARE(box->find(QString(QChar(0xFDD0))), -1);
}

void TestRichTextBox::mixedSelectionsReadAsNull()
{
    box->setText(QStringLiteral("abc"));
    box->setSelStart(1);
    box->setSelLength(1);
    box->setSelBold(true);
    box->setSelColor(0x0000FF);
    box->setSelFontSize(20);
    box->setSelFontName(QStringLiteral("Some Face"));
    QCOMPARE(box->SelBold(), std::optional(true));
    QCOMPARE(box->SelColor(), std::optional(0x0000FF));
    QCOMPARE(box->SelFontSize(), std::optional(20.0F));
    QCOMPARE(box->SelFontName(), std::optional(QStringLiteral("Some Face")));
    box->setSelStart(0);
    box->setSelLength(3);
    QVERIFY(!box->SelBold());
    QVERIFY(!box->SelColor());
    QVERIFY(!box->SelFontSize());
    QVERIFY(!box->SelFontName());
    QCOMPARE(box->SelItalic(), std::optional(false));
    box->setSelBold(true);
    QCOMPARE(box->SelBold(), std::optional(true));
}

void TestRichTextBox::typedTextGetsTheFormatSetAtTheCaret()
{
    box->setSelItalic(true);
    QCOMPARE(selChanges->count(), 1);
    QTest::keyClicks(box.get(), QStringLiteral("x"));
    box->setSelStart(0);
    box->setSelLength(1);
    QCOMPARE(box->SelItalic(), std::optional(true));
}

void TestRichTextBox::changeIsRaisedOnceForEachChangeOfText()
{
    box->setText(QStringLiteral("one\ntwo"));
    QCOMPARE(changes->count(), 1);
    box->setSelStart(0);
    box->setSelLength(3);
    box->setSelText(QStringLiteral("three"));
    QCOMPARE(changes->count(), 2);
    QTest::keyClicks(box.get(), QStringLiteral("ab"));
    QCOMPARE(changes->count(), 4);
    QTest::keyClick(box.get(), Qt::Key_Return);
    QCOMPARE(changes->count(), 5);
    box->setSelText(QString());
    QCOMPARE(changes->count(), 5);
}

void TestRichTextBox::changeIsNotRaisedForFormats()
{
    box->setText(QStringLiteral("one\ntwo"));
    box->setSelStart(0);
    box->setSelLength(box->textLength());
    changes->clear();
    box->setSelBold(true);
    box->setSelFontSize(30);
    box->selectAll();
    box->setAlignment(Qt::AlignRight);
    QCOMPARE(changes->count(), 0);
}

void TestRichTextBox::undoingTextRaisesChangeAndUndoingFormatDoesNot()
{
    box->setSelText(QStringLiteral("one"));
    box->selectAll();
    box->setSelBold(true);
    box->setSelText(QStringLiteral("two"));
    changes->clear();
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("one"));
    QCOMPARE(changes->count(), 1);
    box->undo();
    QCOMPARE(changes->count(), 1);
    box->redo();
    QCOMPARE(changes->count(), 1);
    box->redo();
    QCOMPARE(changes->count(), 2);
    QCOMPARE(box->text(), QStringLiteral("two"));
}

void TestRichTextBox::replacingAsMuchTextRaisesChange()
{
    box->setText(QStringLiteral("abc"));
    box->selectAll();
    changes->clear();
    box->setSelText(QStringLiteral("xyz"));
    QCOMPARE(changes->count(), 1);
}

void TestRichTextBox::selChangeIsRaisedOnceForAMove()
{
    box->setText(QStringLiteral("abc"));
    selChanges->clear();
    box->setSelStart(2);
    QCOMPARE(selChanges->count(), 1);
    box->setSelStart(2);
    QCOMPARE(selChanges->count(), 1);
    box->setSelLength(1);
    QCOMPARE(selChanges->count(), 2);
    QTest::keyClick(box.get(), Qt::Key_Left);
    QCOMPARE(selChanges->count(), 3);
}

void TestRichTextBox::findWithoutStartSearchesTheWholeText()
{
    box->setText(QStringLiteral("The cat\nthe dog"));
    box->setSelStart(12);
    QCOMPARE(box->find(QStringLiteral("THE")), 0);
    QCOMPARE(box->SelText(), QStringLiteral("The"));
    QCOMPARE(box->find(QStringLiteral("the")), 0);
    QCOMPARE(box->find(QString()), -1);
}

void TestRichTextBox::findWithStartWalksOn()
{
    box->setText(QStringLiteral("the\nthe\nthe"));
    QCOMPARE(box->find(QStringLiteral("the"), 1, box->textLength()), 5);
    QCOMPARE(box->find(QStringLiteral("the"), box->SelStart() + 1, box->textLength()), 10);
    QCOMPARE(box->find(QStringLiteral("the"), box->SelStart() + 1, box->textLength()), -1);
    QCOMPARE(box->SelStart(), 10);
    QCOMPARE(box->find(QStringLiteral("the"), 1, 7), -1);
    QCOMPARE(box->find(QStringLiteral("the"), 1, 8), 5);
}

void TestRichTextBox::findCrossesParagraphEnds()
{
    box->setText(QStringLiteral("ab\ncd"));
    QCOMPARE(box->find(QStringLiteral("B\r\nC")), 1);
    QCOMPARE(box->SelText(), QStringLiteral("b\r\nc"));
    box->setText(QStringLiteral("a\u00A0b c"));
    QCOMPARE(box->find(QStringLiteral(" ")), 3);
    QCOMPARE(box->find(QStringLiteral("\u00A0")), 1);
}

void TestRichTextBox::aFailedFindLeavesTheSelection()
{
    box->setText(QStringLiteral("abc"));
    box->setSelStart(1);
    box->setSelLength(1);
    QCOMPARE(box->find(QStringLiteral("x")), -1);
    QCOMPARE(box->SelText(), QStringLiteral("b"));
}

void TestRichTextBox::groupedChangesAreOneUndoStep()
{
    box->setText(QStringLiteral("a b a b a"));
    changes->clear();
    {
        RichTextBox::ChangeGroup group(*box);
        while (box->find(QStringLiteral("a")) >= 0)
            box->setSelText(QStringLiteral("ccc"));
        QCOMPARE(changes->count(), 0);
    }
    QCOMPARE(box->text(), QStringLiteral("ccc b ccc b ccc"));
    QCOMPARE(changes->count(), 1);
    QCOMPARE(box->SelStart(), 15);
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("a b a b a"));
}

void TestRichTextBox::aPausedGroupIsStillOneUndoStep()
{
    box->setText(QStringLiteral("a b a b a"));
    {
        RichTextBox::ChangeGroup group(*box);
        while (box->find(QStringLiteral("a")) >= 0) {
            box->setSelText(QStringLiteral("ccc"));
            group.pause();
            group.resume();
        }
    }
    QCOMPARE(box->text(), QStringLiteral("ccc b ccc b ccc"));
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("a b a b a"));
}

void TestRichTextBox::aSmallFileIsThereAtOnce()
{
    files->addText(QStringLiteral("c:\\a.txt"), QStringLiteral("hello"));
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->LoadFile(QStringLiteral("c:\\a.txt"));
    QCOMPARE(box->text(), QStringLiteral("hello"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(changes->count(), 0);
    QVERIFY(!box->document()->isModified());
    QVERIFY(!box->document()->isUndoAvailable());
    QVERIFY(box->document()->isUndoRedoEnabled());
}

void TestRichTextBox::aLargeFileIsReadInTheBackground()
{
    files->addText(QStringLiteral("c:\\big.txt"), QStringLiteral("hello"), 1LL << 30);
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->setText(QStringLiteral("old"));
    changes->clear();
    box->LoadFile(QStringLiteral("c:\\big.txt"));
    QVERIFY(box->isLoading());
    QCOMPARE(box->text(), QString());
    QVERIFY(box->isReadOnly());
    QVERIFY(finished.wait());
    QVERIFY(!box->isLoading());
    QVERIFY(!box->isReadOnly());
    QCOMPARE(box->text(), QStringLiteral("hello"));
    QCOMPARE(changes->count(), 0);
}

void TestRichTextBox::aMissingFileRaisesItsError()
{
    QCOMPARE(raisedBy([this] { box->LoadFile(QStringLiteral("c:\\none.txt")); }), error::FileNotFound);
}

QTEST_MAIN(TestRichTextBox)
#include "TestRichTextBox.moc"
